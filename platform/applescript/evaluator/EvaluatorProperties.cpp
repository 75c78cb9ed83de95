#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/Display.h"
#include "platform/unicode.h"

#include <cmath>

namespace mervo::applescript {

namespace {

const char* const kWeekdayNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
const char* const kMonthNames[] = {"January", "February", "March", "April", "May", "June", "July", "August",
    "September", "October", "November", "December"};

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

} // namespace

void Evaluator::failProperty(const Value& owner, const PropertyExpr& expr)
{
    throw ScriptError::noSuchObject(describe(expr, owner), owner);
}

/// A property of a value that is no object of an application.
Value Evaluator::languageProperty(const Value& owner, const PropertyExpr& expr)
{
    if (owner.is(Kind::record)) {
        if (const Value* field = owner.asRecord().find(expr.name))
            return *field;
    }
    if (expr.property == LanguageProperty::className && !owner.is(Kind::none))
        return Value::classTerm(classOf(owner));
    if (expr.property == LanguageProperty::contents)
        return owner;
    switch (owner.kind()) {
    case Kind::text:
        return textProperty(owner, expr);
    case Kind::list:
        return listProperty(owner, expr);
    case Kind::date:
        return dateProperty(owner, expr);
    case Kind::application:
        return applicationProperty(owner, expr);
    case Kind::record:
        if (expr.property == LanguageProperty::length)
            return Value::integer(static_cast<std::int64_t>(owner.asRecord().size()));
        break;
    case Kind::file:
        if (expr.property == LanguageProperty::posixPath)
            return Value::text(owner.view());
        if (expr.property == LanguageProperty::name) {
            const std::size_t slash = owner.view().find_last_of('/');
            return Value::text(slash == std::string_view::npos ? owner.view() : owner.view().substr(slash + 1));
        }
        break;
    case Kind::script:
    case Kind::language:
        if (expr.property == LanguageProperty::textItemDelimiters)
            return delimiters_;
        if (expr.property == LanguageProperty::version && owner.is(Kind::language))
            return Value::text("2.8");
        if (owner.is(Kind::script)) {
            for (std::size_t i = 0; i < globals_.size(); ++i) {
                if (script_.globalNames[i] == expr.name && !globals_[i].is(Kind::none))
                    return globals_[i];
            }
        }
        break;
    default:
        break;
    }
    if (expr.property == LanguageProperty::quotedForm)
        return Value::text(quotedForm(toText(owner, joiner())->view()));
    failProperty(owner, expr);
}

Value Evaluator::textProperty(const Value& owner, const PropertyExpr& expr)
{
    switch (expr.property) {
    case LanguageProperty::length:
        return Value::integer(static_cast<std::int64_t>(owner.asText().characterCount()));
    case LanguageProperty::id:
        return codePoints(owner.view());
    case LanguageProperty::quotedForm:
        return Value::text(quotedForm(owner.view()));
    case LanguageProperty::posixPath:
        return owner;
    default:
        failProperty(owner, expr);
    }
}

Value Evaluator::listProperty(const Value& owner, const PropertyExpr& expr)
{
    const List& list = owner.asList();
    auto result = makeRef<List>();
    switch (expr.property) {
    case LanguageProperty::length:
        return Value::integer(static_cast<std::int64_t>(list.size()));
    case LanguageProperty::rest:
        if (list.size() == 0)
            failProperty(owner, expr);
        result->reserve(list.size() - 1);
        for (std::size_t i = 1; i < list.size(); ++i)
            result->append(list[i]);
        return Value::list(result);
    case LanguageProperty::reverse:
        result->reserve(list.size());
        for (std::size_t i = list.size(); i > 0; --i)
            result->append(list[i - 1]);
        return Value::list(result);
    default:
        failProperty(owner, expr);
    }
}

Value Evaluator::dateProperty(const Value& owner, const PropertyExpr& expr)
{
    const Date date = owner.asDate();
    const DateParts parts(date);
    switch (expr.property) {
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
        failProperty(owner, expr);
    }
}

/// What an application is asked without being started; anything else belongs to its root object.
Value Evaluator::applicationProperty(const Value& owner, const PropertyExpr& expr)
{
    if (expr.property == LanguageProperty::running) {
        ApplicationRegistry::Entry* entry = registry_.findByName(owner.view());
        return Value::boolean(entry && ApplicationRegistry::instance(*entry).isRunning());
    }
    ApplicationRegistry::Entry& entry = entryOf(owner);
    switch (expr.property) {
    case LanguageProperty::id:
        return Value::text(entry.bundleId);
    case LanguageProperty::frontmost:
        return Value::boolean(launched(entry).isFrontmost());
    case LanguageProperty::version:
        return Value::text(ApplicationRegistry::instance(entry).version());
    default:
        break;
    }
    const Ref<Object> held = rootOf(owner); // an application may make its root anew at each call
    Object& root = *held;
    if (propertyTerm(root, expr) || expr.property == LanguageProperty::properties)
        return objectProperty(root, expr);
    if (expr.property == LanguageProperty::name)
        return Value::text(entry.names.front());
    ScriptError error(ErrorNumber::noSuchObject, {}, owner);
    explain(error, root.application(), expr.name.spelling());
    throw error;
}

/// False when the property cannot be set.
bool Evaluator::setDateProperty(Date& date, LanguageProperty property, const Value& value)
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

void Evaluator::setDelimiters(const Value& value)
{
    std::vector<Ref<Text>> texts;
    if (value.is(Kind::list)) {
        for (const Value& item : value.asList().items())
            texts.push_back(toText(item));
    } else {
        texts.push_back(toText(value));
    }
    delimiters_ = copied(value);
    delimiterTexts_ = std::move(texts);
    joiner_ = delimiterTexts_.empty() ? std::string() : std::string(delimiterTexts_.front()->view());
    pieces_.text = {};
}

} // namespace mervo::applescript
