#include "platform/desk/applications/eventkit/EventValues.h"

namespace mervo::desk::EventValues {

using applescript::Date;
using applescript::DateParts;
using applescript::ScriptError;
using applescript::Value;

namespace {

Date dateOf(const Value& value)
{
    const Date date = applescript::toDate(value);
    const std::int64_t year = DateParts(date).year;
    if (year < 1 || year > 9999)
        refuse("A date lies between the years 1 and 9999.");
    return date;
}

} // namespace

Value textOrMissing(const std::string& text)
{
    return text.empty() ? Value::missing() : Value::text(text);
}

Value dateOrMissing(std::optional<std::int64_t> moment)
{
    return moment ? Value::date(Date::fromUnix(*moment)) : Value::missing();
}

std::string textOf(const Value& value)
{
    return value.is(applescript::Kind::missing) ? std::string() : applescript::toString(value);
}

std::int64_t momentOf(const Value& value)
{
    return dateOf(value).toUnix();
}

Value dueValue(const platform::DateComponents& due)
{
    const platform::TimeOfDay time = due.time.value_or(platform::TimeOfDay{});
    return Value::date(
        Date::fromParts(due.year, due.month, due.day, time.hour * 3600 + time.minute * 60 + time.second));
}

Value dayValue(const platform::DateComponents& due)
{
    return Value::date(Date::fromParts(due.year, due.month, due.day));
}

platform::DateComponents dueOf(const Value& value)
{
    const DateParts parts(dateOf(value));
    platform::DateComponents due{.year = static_cast<int>(parts.year), .month = parts.month, .day = parts.day};
    if (parts.secondOfDay != 0) {
        due.time = platform::TimeOfDay{
            .hour = parts.secondOfDay / 3600, .minute = parts.secondOfDay / 60 % 60, .second = parts.secondOfDay % 60};
    }
    return due;
}

void requireWritable(const platform::Collection& collection)
{
    if (!collection.isWritable)
        refuse("“" + collection.title + "” cannot be written to.");
}

void refuse(const std::string& sentence)
{
    throw ScriptError(applescript::ErrorNumber::handlerFailed, sentence);
}

} // namespace mervo::desk::EventValues
