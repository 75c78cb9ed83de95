#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// The owner's calendars and lists of reminders, over the files that other programs read and write too.
namespace mervo::platform {

enum class Entity { events, reminders };

/// What the owner lets this program do with an entity.
enum class Authorization { notDetermined, restricted, denied, fullAccess, writeOnly };

/// Why full access is asked for: for a use that waits, or to settle it before there is one. Where the owner wants no
/// questions, a use goes on and nothing is recorded; settling records that it is allowed.
enum class AccessPurpose { use, settle };

/// What the store could not do; what() is one sentence for the owner.
class EventStoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A calendar or a list of reminders. Several may share a title.
struct Collection {
    std::string id; ///< stays while the collection does, also under a new title
    std::string title;
    std::string color = {}; ///< "#rrggbb"; empty: none
    bool isWritable = true;
};

struct TimeOfDay {
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// A date of the owner's local calendar, or a date and a local time.
struct DateComponents {
    int year = 1970;
    int month = 1; ///< 1-12
    int day = 1; ///< 1-31
    std::optional<TimeOfDay> time = {}; ///< nothing: the whole day
};

/// From `start` to before `end`, in seconds since 1970-01-01 UTC.
struct TimeSpan {
    std::int64_t start = 0;
    std::int64_t end = 0;
};

/// One occurrence of an event. `item` and `occurrence` say which; the store gives them out and takes them back.
struct Event {
    std::string item = {}; ///< the item within its collection
    std::string occurrence = {}; ///< which one of a repeating item; empty: the item does not repeat
    Collection calendar = {};
    std::string uid = {};
    std::string title = {}; ///< this and the next three: empty where there is none
    std::string location = {};
    std::string notes = {};
    std::string url = {};
    std::string recurrence = {}; ///< "FREQ=DAILY;COUNT=3"; empty: none
    std::string status = {}; ///< "CONFIRMED", "TENTATIVE", "CANCELLED"; empty: none
    std::int64_t start = 0; ///< seconds since 1970-01-01 UTC; a day's local midnight where it lasts all day
    std::int64_t end = 0; ///< the first moment behind it
    bool isAllDay = false;
    std::int64_t sequence = 0;
    std::optional<std::int64_t> stamp = {}; ///< DTSTAMP
};

/// What to set; a member without a value leaves the event as it is, an empty text takes the property away.
struct EventChange {
    std::optional<std::string> title = {};
    std::optional<std::string> location = {};
    std::optional<std::string> notes = {};
    std::optional<std::string> url = {};
    std::optional<std::string> recurrence = {};
    std::optional<std::string> status = {};
    std::optional<std::int64_t> start = {}; ///< the end keeps its distance unless it is set as well
    std::optional<std::int64_t> end = {};
    std::optional<bool> isAllDay = {};
};

/// A reminder as it stands; of a repeating one the date that is due next.
struct Reminder {
    std::string item = {};
    Collection list = {};
    std::string uid = {};
    std::string title = {};
    std::string notes = {};
    bool isCompleted = false;
    bool isFlagged = false;
    int priority = 0; ///< 0 (none) to 9
    std::optional<DateComponents> due = {};
    std::optional<std::int64_t> completed = {}; ///< these three in seconds since 1970-01-01 UTC
    std::optional<std::int64_t> created = {};
    std::optional<std::int64_t> modified = {};
    std::vector<std::int64_t> absoluteAlarms = {}; ///< in the order of the file, seconds since 1970-01-01 UTC
};

/// What to set; a member without a value leaves the reminder as it is.
struct ReminderChange {
    std::optional<std::string> title = {};
    std::optional<std::string> notes = {}; ///< empty takes them away
    std::optional<bool> isCompleted = {};
    std::optional<bool> isFlagged = {};
    std::optional<int> priority = {};
    std::optional<DateComponents> due = {};
    bool clearDue = false; ///< takes the due date away
    std::optional<std::int64_t> completed = {}; ///< when it was done; needs isCompleted
    std::optional<std::vector<std::int64_t>> absoluteAlarms = {}; ///< in their order; more are added, fewer taken away
};

/// The store. A change is staged and becomes real with `commit`: all that was staged, or none of it. Everything but
/// authorization() throws EventStoreError. Blocks; one thread at a time.
class EventStore {
public:
    EventStore() = default;
    EventStore(const EventStore&) = delete;
    EventStore& operator=(const EventStore&) = delete;
    virtual ~EventStore() = default;

    virtual Authorization authorization(Entity entity) const = 0;
    /// Asks the owner where nothing was decided, and waits for the answer. True: full access. Throws when nobody can be
    /// asked.
    virtual bool requestFullAccess(Entity entity, AccessPurpose purpose) = 0;

    /// Calendars, or lists of reminders, in no order that means something. What is asked for within a tenth of a second
    /// afterwards may be answered from the same look at the disk.
    virtual std::vector<Collection> collections(Entity entity) = 0;
    /// Where new items go that name no collection. It need not be on disk yet.
    virtual Collection defaultCollection(Entity entity) = 0;

    /// Every occurrence in all calendars that overlaps the span, in no order that means something.
    virtual std::vector<Event> events(TimeSpan span) = 0;
    /// Every event of one calendar, a repeating one once, at its first occurrence.
    virtual std::vector<Event> allEvents(const Collection& calendar) = 0;
    /// The reminders of these lists.
    virtual std::vector<Reminder> reminders(const std::vector<Collection>& lists) = 0;

    /// A new event; `start` must be set, and lasts an hour without an end. Returns its UID.
    virtual std::string add(const Collection& calendar, const EventChange& event) = 0;
    /// This occurrence alone. Without an occurrence the whole item.
    virtual void change(const Event& event, const EventChange& change) = 0;
    virtual void remove(const Event& event) = 0;

    virtual std::string add(const Collection& list, const ReminderChange& reminder) = 0;
    virtual void change(const Reminder& reminder, const ReminderChange& change) = 0;
    virtual void move(const Reminder& reminder, const Collection& list) = 0;
    virtual void remove(const Reminder& reminder) = 0;

    /// A collection of its own on disk, whatever other one has the title.
    virtual Collection addCollection(Entity entity, const std::string& title) = 0;
    virtual void rename(const Collection& collection, const std::string& title) = 0;
    virtual void setColor(const Collection& collection, const std::string& color) = 0;
    /// With all its items of this entity.
    virtual void remove(const Collection& collection, Entity entity) = 0;

    /// Makes what was staged real. Throws when a file has changed since it was read, and when the disk does not take
    /// it: then nothing of it has happened. Either way nothing is staged any more.
    virtual void commit() = 0;
};

/// The owner's store. Loads the part of the bundle that holds it. Throws EventStoreError.
std::unique_ptr<EventStore> openEventStore();

} // namespace mervo::platform
