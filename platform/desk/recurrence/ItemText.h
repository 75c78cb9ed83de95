#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// A line of an item, as far as times need it.
struct ItemLine {
    std::string name; ///< in capitals
    std::string tzid; ///< this and the next one: empty where there is none
    std::string range; ///< RANGE, in capitals
    std::string value;
    std::string raw; ///< the whole line without folds
};

struct ItemComponent {
    std::string name; ///< in capitals: VEVENT, VTODO; STANDARD, DAYLIGHT
    std::vector<ItemLine> lines;
};

struct ItemZone {
    std::string tzid;
    std::vector<ItemComponent> observances;
};

/// What of a file (RFC 5545) says when something is: the lines about times of the events and tasks that stand directly
/// in a calendar, in their order, and the time zones. All else is passed over, so that neither its size nor its depth
/// matters. Reading takes time in proportion to the bytes.
struct ItemText {
    std::vector<ItemComponent> events;
    std::vector<ItemComponent> todos;
    std::vector<ItemZone> zones;
};

ItemText readItemText(std::string_view text);

} // namespace mervo::desk
