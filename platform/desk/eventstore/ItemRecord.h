#pragma once

#include "platform/desk/vdir/ItemFile.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the store keeps of an .ics file, so that an unchanged one need not be read again.
namespace mervo::desk {

/// A VEVENT, as platform::Event shows it. Its times come from the file's timesText.
struct EventRecord {
    std::string uid, title, location, notes, url, recurrence, status;
    std::int64_t sequence = 0;
    std::optional<std::int64_t> stamp = {};
};

/// When a task is due, apart from the owner's zone.
struct DueRecord {
    enum class Kind : std::uint8_t { none, date, floating, moment };
    Kind kind = Kind::none;
    std::int64_t seconds = 0; ///< on the wall, since 1970; of a moment since 1970 UTC
};

/// A VTODO that is no change of another one in the file.
struct TaskRecord {
    std::uint32_t component = 0; ///< its number among the VTODOs
    std::string uid, title, notes;
    bool isCompleted = false, isFlagged = false;
    int priority = 0;
    DueRecord due = {};
    std::optional<std::int64_t> completed = {}, created = {}, modified = {};
    std::vector<std::int64_t> alarms = {};
};

struct ItemRecord {
    bool isDamaged = false; ///< no calendar, or one that is not whole; it shows nothing
    std::vector<EventRecord> events = {}; ///< every VEVENT, by its number
    std::vector<TaskRecord> tasks = {};
    std::string times = {}; ///< timesText, where there are events
    /// No occurrence lies outside, whatever the owner's zone; seconds since 1970 UTC. Empty without events.
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t last = std::numeric_limits<std::int64_t>::min();
};

/// Reads a whole file. Bounded in time whatever it holds.
ItemRecord readRecord(const std::string& bytes);

/// The record as bytes and back. Nothing for bytes that are no record.
std::string packed(const ItemRecord& record);
std::optional<ItemRecord> unpacked(std::string_view bytes);

} // namespace mervo::desk
