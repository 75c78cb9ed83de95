#pragma once

#include "platform/desk/recurrence/DateValue.h"
#include "platform/desk/recurrence/FileZones.h"
#include "platform/desk/recurrence/RuleDates.h"

namespace mervo::desk {

/// A rule as an item has it.
struct ItemRule {
    std::string text;
    Rule rule;
    WallTime last = kLastWallTime; ///< UNTIL, on the clock of the item
};

/// A further date of an item; a period has an end of its own.
struct ItemDate {
    WallTime wall = 0; ///< on the clock of the item
    std::optional<std::int64_t> end = {}; ///< a moment
};

/// When one component is.
struct ItemTimes {
    std::size_t component = 0; ///< among the events, or the tasks, of the file
    std::string uid;
    std::int64_t sequence = 0;
    DateValue start; ///< DTSTART; of a task without one DUE
    std::optional<DateValue> due; ///< of a task
    TimeLength length; ///< not negative; at least a day where it lasts all day
    std::vector<ItemRule> rules;
    std::vector<ItemDate> dates; ///< RDATE
    std::vector<WallTime> exceptions; ///< EXDATE, on the clock of the item, in ascending order
    std::vector<std::int64_t> exceptionDays; ///< EXDATE values of the type DATE where the item has times
    std::optional<DateValue> changed; ///< RECURRENCE-ID
    bool isForFuture = false; ///< RANGE=THISANDFUTURE

    bool isRepeating() const { return !rules.empty() || !dates.empty(); }
    bool isException(WallTime wall) const;
};

/// Nothing for a component without a date to start from. What cannot be read of the rest is left out.
std::optional<ItemTimes> readItemTimes(const ItemComponent& component, std::size_t index, const FileZones& zones);

} // namespace mervo::desk
