#include "platform/applescript/evaluator/Properties.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/List.h"
#include "platform/unicode.h"

#include <cmath>

namespace mervo::applescript {

namespace {

constexpr std::int64_t kLargestPart = 1'000'000'000;

/// In single quotes, for a shell.
std::string quotedForm(std::string_view text)
{
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

Value codePoints(std::string_view text)
{
    auto points = makeRef<List>();
    while (!text.empty()) {
        const platform::CodePoint point = platform::firstCodePoint(text);
        points->append(Value::integer(point.value));
        text.remove_prefix(std::max<std::size_t>(point.length, 1));
    }
    return points->size() == 1 ? (*points)[0] : Value::list(points);
}

std::optional<Value> textProperty(const Value& owner, LanguageProperty property)
{
    switch (property) {
    case LanguageProperty::length:
        return Value::integer(static_cast<std::int64_t>(owner.asText().characterCount()));
    case LanguageProperty::id:
        return codePoints(owner.view());
    case LanguageProperty::quotedForm:
        return Value::text(quotedForm(owner.view()));
    case LanguageProperty::posixPath:
        return owner;
    default:
        return {};
    }
}

Value restOf(const List& list)
{
    auto rest = makeRef<List>();
    rest->reserve(list.size() - 1);
    for (std::size_t i = 1; i < list.size(); ++i)
        rest->append(list[i]);
    return Value::list(rest);
}

Value reversed(const List& list)
{
    auto result = makeRef<List>();
    result->reserve(list.size());
    for (std::size_t i = list.size(); i > 0; --i)
        result->append(list[i - 1]);
    return Value::list(result);
}

std::optional<Value> listProperty(const Value& owner, LanguageProperty property)
{
    const List& list = owner.asList();
    switch (property) {
    case LanguageProperty::length:
        return Value::integer(static_cast<std::int64_t>(list.size()));
    case LanguageProperty::rest:
        return list.size() > 0 ? std::optional(restOf(list)) : std::nullopt;
    case LanguageProperty::reverse:
        return reversed(list);
    default:
        return {};
    }
}

std::optional<Value> dateProperty(const Value& owner, LanguageProperty property)
{
    const Date date = owner.asDate();
    const DateParts parts(date);
    switch (property) {
    case LanguageProperty::year:
        return Value::integer(parts.year);
    case LanguageProperty::month:
        return Value::constant(Symbol(kMonthNames[parts.month - 1]));
    case LanguageProperty::day:
        return Value::integer(parts.day);
    case LanguageProperty::weekday:
        return Value::constant(Symbol(kWeekdayNames[parts.weekday - 1]));
    case LanguageProperty::hours:
        return Value::integer(parts.secondOfDay / 3600);
    case LanguageProperty::minutes:
        return Value::integer(parts.secondOfDay / 60 % 60);
    case LanguageProperty::seconds:
        return Value::integer(parts.secondOfDay % 60);
    case LanguageProperty::time:
        return Value::integer(parts.secondOfDay);
    case LanguageProperty::dateString:
        return Value::text(dateString(date));
    case LanguageProperty::timeString:
        return Value::text(timeString(date));
    case LanguageProperty::shortDateString:
        return Value::text(shortDateString(date));
    default:
        return {};
    }
}

std::optional<Value> fileProperty(const Value& owner, LanguageProperty property)
{
    if (property == LanguageProperty::posixPath)
        return Value::text(owner.view());
    if (property != LanguageProperty::name)
        return {};
    const std::size_t slash = owner.view().find_last_of('/');
    return Value::text(slash == std::string_view::npos ? owner.view() : owner.view().substr(slash + 1));
}

} // namespace

std::optional<Value> propertyOfValue(
    const Value& owner, LanguageProperty property, Symbol name, const TextSettings& texts)
{
    if (owner.is(Kind::record)) {
        if (const Value* field = owner.asRecord().find(name))
            return *field;
    }
    if (property == LanguageProperty::className && !owner.is(Kind::none))
        return Value::classTerm(classOf(owner));
    if (property == LanguageProperty::contents)
        return owner;
    switch (owner.kind()) {
    case Kind::text:
        return textProperty(owner, property);
    case Kind::list:
        return listProperty(owner, property);
    case Kind::date:
        return dateProperty(owner, property);
    case Kind::record:
        if (property == LanguageProperty::length)
            return Value::integer(static_cast<std::int64_t>(owner.asRecord().size()));
        break;
    case Kind::file:
        if (auto value = fileProperty(owner, property))
            return value;
        break;
    case Kind::script:
    case Kind::language:
        if (property == LanguageProperty::textItemDelimiters)
            return texts.delimiters();
        if (property == LanguageProperty::version && owner.is(Kind::language))
            return Value::text("2.8");
        break;
    default:
        break;
    }
    if (property == LanguageProperty::quotedForm)
        return Value::text(quotedForm(toText(owner, texts.joiner())->view()));
    return {};
}

bool setDateProperty(Date& date, LanguageProperty property, const Value& value)
{
    const DateParts parts(date);
    const std::int64_t number = toInteger(value);
    if (std::abs(number) > kLargestPart)
        throw ScriptError::cannotCoerce(value, "integer");
    switch (property) {
    // An impossible day rolls over at once: February 31 is March 2 or 3.
    case LanguageProperty::year:
        date = Date::fromParts(number, parts.month, parts.day, parts.secondOfDay);
        return true;
    case LanguageProperty::month:
        date = Date::fromParts(parts.year, number, parts.day, parts.secondOfDay);
        return true;
    case LanguageProperty::day:
        date = Date::fromParts(parts.year, parts.month, number, parts.secondOfDay);
        return true;
    case LanguageProperty::time:
        date = {date.seconds - parts.secondOfDay + number};
        return true;
    case LanguageProperty::hours:
        date.seconds += (number - parts.secondOfDay / 3600) * 3600;
        return true;
    case LanguageProperty::minutes:
        date.seconds += (number - parts.secondOfDay / 60 % 60) * 60;
        return true;
    case LanguageProperty::seconds:
        date.seconds += number - parts.secondOfDay % 60;
        return true;
    default:
        return false;
    }
}

} // namespace mervo::applescript
