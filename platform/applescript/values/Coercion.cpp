#include "platform/applescript/values/Coercion.h"

#include "platform/applescript/values/Application.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Reference.h"
#include "platform/applescript/values/ScriptError.h"
#include "platform/ascii.h"
#include "platform/unicode.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace mervo::applescript {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kSpaces = " \t\r\n";
    const std::size_t start = text.find_first_not_of(kSpaces);
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(kSpaces) - start + 1);
}

/// A text as a number: digits, a point, an exponent, a sign. Nothing for any other.
std::optional<Value> parsedNumber(std::string_view text)
{
    text = trimmed(text);
    std::string_view digits = text;
    if (!digits.empty() && (digits.front() == '+' || digits.front() == '-'))
        digits.remove_prefix(1);
    if (digits.empty() || !(platform::ascii::isDigit(digits.front()) || digits.front() == '.'))
        return {}; // from_chars would take "inf" and "nan"
    if (text.front() == '+')
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return {};
    if (text.find_first_of(".eE") == std::string_view::npos && std::fabs(value) < 1e15)
        return Value::integer(static_cast<std::int64_t>(value));
    return Value::real(value);
}

std::int64_t rounded(const Value& value)
{
    if (value.is(Kind::integer))
        return value.asInteger();
    const double real = std::nearbyint(value.asReal()); // half to even: the rounding mode is never changed
    if (!(std::fabs(real) < 1e15))
        throw ScriptError::cannotCoerce(value, "integer");
    return static_cast<std::int64_t>(real);
}

const char* nameOf(TargetClass target)
{
    switch (target) {
    case TargetClass::integer:
        return "integer";
    case TargetClass::real:
        return "real";
    case TargetClass::number:
        return "number";
    case TargetClass::text:
        return "text";
    case TargetClass::boolean:
        return "boolean";
    case TargetClass::list:
        return "list";
    case TargetClass::record:
        return "record";
    case TargetClass::date:
        return "date";
    case TargetClass::classTerm:
        return "class";
    case TargetClass::constant:
        return "constant";
    case TargetClass::file:
        return "file";
    case TargetClass::item:
        return "item";
    }
    return "";
}

/// A list of one item coerces as the item does.
const Value* onlyItem(const Value& value)
{
    return value.is(Kind::list) && value.asList().size() == 1 ? &value.asList().items()[0] : nullptr;
}

int monthNumber(Symbol word)
{
    int number = 0;
    for (const char* name : kMonthNames) {
        ++number;
        if (word == Symbol(name))
            return number;
    }
    return 0;
}

/// The value, references followed and an object's own conversion used.
Value plain(const Value& value, Kind wanted)
{
    Value result = dereferenced(value);
    if (result.is(Kind::object)) {
        if (Value own = result.asObject().coerced(wanted); !own.is(Kind::none))
            return own;
    }
    return result;
}

void appendJoined(Ref<Text>& text, const List& list, std::string_view delimiter)
{
    Limits::enter();
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i > 0)
            text = Text::joined(text, delimiter);
        text = Text::joined(text, toText(list[i], delimiter)->view());
    }
}

Value numberOf(const Value& original, TargetClass target)
{
    Limits::enter();
    Value value = plain(original, Kind::real);
    if (value.isNumber())
        return value;
    if (value.is(Kind::boolean))
        return Value::integer(value.asBoolean() ? 1 : 0);
    if (value.is(Kind::text)) {
        if (auto number = parsedNumber(value.view()))
            return *number;
    }
    if (const Value* item = onlyItem(value))
        return numberOf(*item, target);
    if (value.is(Kind::constant)) {
        if (const int month = monthNumber(value.asSymbol()))
            return Value::integer(month);
    }
    throw ScriptError::cannotCoerce(value, nameOf(target));
}

Value listOf(const Value& value)
{
    if (value.is(Kind::list))
        return value;
    if (!value.is(Kind::record))
        return Value::list(std::vector<Value>{value});
    auto list = makeRef<List>();
    for (const Record::Field& field : value.asRecord().fields())
        list->append(field.value);
    return Value::list(list);
}

/// The forms that this host writes itself, and YYYY-MM-DD with an optional time of day.
std::optional<Date> parsedDate(const std::string& text)
{
    long long year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int read = 0;
    if (std::sscanf(text.c_str(), "%4lld-%2d-%2d%n", &year, &month, &day, &read) == 3) {
        const char* rest = text.c_str() + read;
        if (*rest != '\0' && std::sscanf(rest, "%*1[ T]%2d:%2d:%2d%n", &hour, &minute, &second, &read) != 3)
            return {};
        if (*rest != '\0' && rest[read] != '\0')
            return {};
    } else {
        char monthName[16] = {};
        char half[3] = {};
        if (std::sscanf(text.c_str(), "%*15[A-Za-z], %15[A-Za-z] %2d, %9lld at %2d:%2d:%2d %2[AP]M", monthName, &day,
                &year, &hour, &minute, &second, half)
            < 3)
            return {};
        month = monthNumber(Symbol(monthName));
        hour = half[0] == '\0' ? hour : hour % 12 + (half[0] == 'P' ? 12 : 0);
    }
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 || hour > 23 || minute < 0 || minute > 59
        || second < 0 || second > 59)
        return {};
    return Date::fromParts(year, month, day, hour * 3600 + minute * 60 + second);
}

} // namespace

Ref<Text> toText(const Value& original, std::string_view delimiter)
{
    Limits::enter();
    Limits::step();
    const Value value = plain(original, Kind::text);
    switch (value.kind()) {
    case Kind::text:
        return Ref<Text>(&value.asText());
    case Kind::integer:
    case Kind::real:
    case Kind::boolean:
    case Kind::missing:
    case Kind::classTerm:
    case Kind::constant:
        return Text::make(displayForm(value));
    case Kind::date:
        return Text::make(longDate(value.asDate()));
    case Kind::file:
        return Ref<Text>(&value.asText());
    case Kind::list: {
        Ref<Text> text = Text::make({});
        appendJoined(text, value.asList(), delimiter);
        return text;
    }
    default:
        throw ScriptError::cannotCoerce(value, "text");
    }
}

std::string toString(const Value& value)
{
    return std::string(toText(value)->view());
}

bool toBoolean(const Value& original)
{
    const Value value = plain(original, Kind::boolean);
    if (value.is(Kind::boolean))
        return value.asBoolean();
    if (value.is(Kind::integer) && (value.asInteger() == 0 || value.asInteger() == 1))
        return value.asInteger() == 1;
    if (value.is(Kind::text)) {
        const std::string word = platform::foldCase(value.view());
        if (word == "true" || word == "false")
            return word == "true";
    }
    if (const Value* item = onlyItem(value); item && !item->is(Kind::list))
        return toBoolean(*item);
    throw ScriptError::cannotCoerce(value, "boolean");
}

std::int64_t toInteger(const Value& value)
{
    return rounded(numberOf(value, TargetClass::integer));
}

double toReal(const Value& value)
{
    return numberOf(value, TargetClass::real).asNumber();
}

Value toNumber(const Value& value)
{
    return numberOf(value, TargetClass::number);
}

Date toDate(const Value& original)
{
    const Value value = plain(original, Kind::date);
    if (value.is(Kind::date))
        return value.asDate();
    if (value.is(Kind::text)) {
        if (const auto date = parsedDate(std::string(value.view())))
            return *date;
    }
    if (const Value* item = onlyItem(value); item && !item->is(Kind::list))
        return toDate(*item);
    throw ScriptError::cannotCoerce(value, "date");
}

std::string toPath(const Value& original)
{
    const Value value = dereferenced(original);
    if (value.is(Kind::file) || value.is(Kind::text))
        return std::string(value.view());
    throw ScriptError::cannotCoerce(value, "file");
}

Value coerce(const Value& original, TargetClass target, std::string_view delimiter)
{
    Limits::enter();
    switch (target) {
    case TargetClass::integer:
        return Value::integer(toInteger(original));
    case TargetClass::real:
        return Value::real(toReal(original));
    case TargetClass::number:
        return toNumber(original);
    case TargetClass::text:
        return Value::text(toText(original, delimiter));
    case TargetClass::boolean:
        return Value::boolean(toBoolean(original));
    case TargetClass::file:
        return Value::file(toPath(original));
    case TargetClass::item:
        return dereferenced(original);
    case TargetClass::list:
        return listOf(dereferenced(original));
    case TargetClass::date: {
        const Value value = plain(original, Kind::date);
        return value.is(Kind::date) ? value : Value::date(toDate(value));
    }
    case TargetClass::record:
    case TargetClass::classTerm:
    case TargetClass::constant:
        break;
    }
    Value value = dereferenced(original);
    const Kind kept = target == TargetClass::record ? Kind::record
        : target == TargetClass::classTerm          ? Kind::classTerm
                                                    : Kind::constant;
    if (value.is(kept))
        return value;
    if (const Value* item = onlyItem(value))
        return coerce(*item, target, delimiter);
    throw ScriptError::cannotCoerce(value, nameOf(target));
}

} // namespace mervo::applescript
