#pragma once

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/ScriptError.h"
#include "platform/eventkit.h"

#include <cstdint>
#include <optional>
#include <string>

/// Between what the store of events has and what scripts see.
namespace mervo::desk::EventValues {

applescript::Value textOrMissing(const std::string& text); ///< missing value for an empty one
applescript::Value dateOrMissing(std::optional<std::int64_t> moment);

/// The text of a value; empty for missing value.
std::string textOf(const applescript::Value& value);
/// The moment of a date. -10000 for a year before 1 or after 9999, which calendars cannot write down.
std::int64_t momentOf(const applescript::Value& value);

applescript::Value dueValue(const platform::DateComponents& due); ///< midnight for a whole day
applescript::Value dayValue(const platform::DateComponents& due); ///< midnight in any case
/// A due date of a date: midnight is the whole day.
platform::DateComponents dueOf(const applescript::Value& value);

/// -10000 with a sentence, unless the collection can be written to.
void requireWritable(const platform::Collection& collection);

/// -10000 with a sentence.
[[noreturn]] void refuse(const std::string& sentence);

/// The objects of one class that a command is for: one, or each of a list. -10000 with the refusal for any other value.
template <typename Wanted, typename Work>
void forEachObject(const applescript::Value& what, const char* refusal, const Work& work)
{
    if (what.is(applescript::Kind::list)) {
        for (const applescript::Value& item : what.asList().items())
            forEachObject<Wanted>(item, refusal, work);
        return;
    }
    auto* object = what.is(applescript::Kind::object) ? dynamic_cast<Wanted*>(&what.asObject()) : nullptr;
    if (object == nullptr)
        refuse(refusal);
    work(*object);
}

} // namespace mervo::desk::EventValues
