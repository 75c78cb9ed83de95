#include "platform/jobs/Job.h"

#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/propertylist/PropertyList.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

namespace mervo::jobs {

namespace {

namespace ascii = platform::ascii;
using platform::PropertyList;

constexpr std::size_t kLongestList = 1024 * 1024;
constexpr std::size_t kLongestLabel = 230; // in a file's name of 255 bytes, with what is added to it
constexpr std::size_t kMostTimes = 1000; // each is looked at whenever the job has run

/// A member of a type, null when it is not there. Throws when it is there with another one.
template <typename Type>
const Type* member(const PropertyList& list, const std::string& key, std::string_view form)
{
    const Type* value = list.find<Type>(key);
    if (value == nullptr && list.find(key) != nullptr)
        throw JobError(key + " must be " + std::string(form) + '.');
    return value;
}

/// A text that can stand in a command, a variable or a path: NUL would end it.
const std::string& text(const std::string& value, const std::string& key)
{
    if (value.find('\0') != std::string::npos)
        throw JobError(key + " holds a NUL character.");
    return value;
}

std::string path(const PropertyList& list, const std::string& key)
{
    const auto* value = member<std::string>(list, key, "a text");
    if (value != nullptr && !text(*value, key).starts_with('/'))
        throw JobError(key + " must be an absolute path.");
    return value == nullptr ? "" : *value;
}

std::vector<std::string> arguments(const PropertyList& list)
{
    const std::string key = "ProgramArguments";
    const auto* words = member<PropertyList::Array>(list, key, "a list of texts");
    std::vector<std::string> result;
    for (const PropertyList& word : words == nullptr ? PropertyList::Array() : *words) {
        const auto* value = word.as<std::string>();
        if (value == nullptr)
            throw JobError(key + " must be a list of texts.");
        result.push_back(text(*value, key));
    }
    if (result.empty() || result.front().empty())
        throw JobError(key + " must name a program.");
    if (!result.front().starts_with('/') && result.front().find('/') != std::string::npos)
        throw JobError("the program " + result.front() + " must be an absolute path or a bare name.");
    return result;
}

std::map<std::string, std::string> environment(const PropertyList& list)
{
    const std::string key = "EnvironmentVariables";
    std::map<std::string, std::string> result;
    if (const auto* variables = member<PropertyList::Dictionary>(list, key, "a dictionary of texts")) {
        for (const auto& [name, value] : *variables) {
            const auto isName = [](char c) { return ascii::isLetter(c) || ascii::isDigit(c) || c == '_'; };
            if (value.as<std::string>() == nullptr)
                throw JobError(key + " must be a dictionary of texts.");
            if (name.empty() || ascii::isDigit(name.front()) || !std::ranges::all_of(name, isName))
                throw JobError(key + ": \"" + name + "\" is no name of a variable.");
            result[name] = text(*value.as<std::string>(), key);
        }
    }
    return result;
}

struct Field {
    const char* key;
    std::optional<int> CalendarTime::*member;
    int least, most;
};
constexpr std::array kFields{
    Field{"Minute", &CalendarTime::minute, 0, 59},
    Field{"Hour", &CalendarTime::hour, 0, 23},
    Field{"Day", &CalendarTime::day, 1, 31},
    Field{"Weekday", &CalendarTime::weekday, 0, 7},
    Field{"Month", &CalendarTime::month, 1, 12},
};
constexpr const char* kCalendar = "StartCalendarInterval";

CalendarTime calendarTime(const PropertyList& list)
{
    if (list.as<PropertyList::Dictionary>() == nullptr)
        throw JobError(std::string(kCalendar) + " must be a dictionary or a list of dictionaries.");
    CalendarTime time;
    for (const Field& field : kFields) {
        const std::string key = std::string(field.key) + " of " + kCalendar;
        const std::string form =
            key + " must be a number from " + std::to_string(field.least) + " to " + std::to_string(field.most) + '.';
        const PropertyList* value = list.find(field.key);
        if (value == nullptr)
            continue;
        const auto* number = value->as<std::int64_t>();
        if (number == nullptr || *number < field.least || *number > field.most)
            throw JobError(form);
        time.*field.member = static_cast<int>(*number);
    }
    for (const auto& [key, value] : *list.as<PropertyList::Dictionary>()) {
        if (std::ranges::find(kFields, key, &Field::key) == kFields.end())
            throw JobError("\"" + key + "\" is no part of " + kCalendar + '.');
    }
    return time;
}

std::vector<CalendarTime> calendar(const PropertyList& list)
{
    std::vector<CalendarTime> times;
    const PropertyList* value = list.find(kCalendar);
    if (value == nullptr)
        return times;
    if (const auto* several = value->as<PropertyList::Array>()) {
        if (several->size() > kMostTimes)
            throw JobError(std::string(kCalendar) + " has more than " + std::to_string(kMostTimes) + " times.");
        for (const PropertyList& one : *several)
            times.push_back(calendarTime(one));
    } else {
        times.push_back(calendarTime(*value));
    }
    return times;
}

std::optional<std::chrono::seconds> interval(const PropertyList& list)
{
    const std::string key = "StartInterval";
    const auto* seconds = member<std::int64_t>(list, key, "a number of seconds");
    if (seconds == nullptr)
        return std::nullopt;
    constexpr std::int64_t kMost = 100LL * 366 * 24 * 3600; // a century
    if (*seconds < 1 || *seconds > kMost)
        throw JobError(key + " must be from 1 to " + std::to_string(kMost) + " seconds.");
    return std::chrono::seconds(*seconds);
}

/// ProcessType asks for a share of the machine: every job here has what any program of the user has.
bool isKnown(std::string_view key)
{
    constexpr std::array<std::string_view, 10> kKnown{"Label", "ProgramArguments", "StartInterval", kCalendar,
        "StandardOutPath", "StandardErrorPath", "RunAtLoad", "EnvironmentVariables", "WorkingDirectory", "ProcessType"};
    return std::ranges::find(kKnown, key) != kKnown.end();
}

} // namespace

bool isLabel(std::string_view label) noexcept
{
    const auto isPart = [](char c) {
        return ascii::isLetter(c) || ascii::isDigit(c) || c == '.' || c == '_' || c == '-';
    };
    return !label.empty() && label.size() <= kLongestLabel && label.front() != '.' && label.front() != '-'
        && std::ranges::all_of(label, isPart);
}

ReadJob readJob(const std::filesystem::path& file)
{
    std::error_code error;
    const auto bytes = platform::readFile(file, kLongestList, &error);
    if (!bytes)
        throw JobError(error.message() + '.');
    const auto list = platform::readPropertyList(*bytes);
    if (!list || list->as<PropertyList::Dictionary>() == nullptr)
        throw JobError("it is no property list with a dictionary.");
    const auto* label = member<std::string>(*list, "Label", "a text");
    if (label == nullptr || !isLabel(*label))
        throw JobError(
            "Label must be of letters, digits, \".\", \"_\" and \"-\", and begin with a letter, a digit or \"_\".");
    const auto* runAtLoad = member<bool>(*list, "RunAtLoad", "true or false");
    ReadJob read{{*label, arguments(*list), interval(*list), calendar(*list), path(*list, "StandardOutPath"),
                     path(*list, "StandardErrorPath"), path(*list, "WorkingDirectory"), environment(*list),
                     runAtLoad != nullptr && *runAtLoad, file},
        {}};
    for (const auto& [key, value] : *list->as<PropertyList::Dictionary>()) {
        if (!isKnown(key))
            read.unknown.push_back(key);
    }
    return read;
}

} // namespace mervo::jobs
