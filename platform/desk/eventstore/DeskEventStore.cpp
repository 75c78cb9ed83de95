#include "platform/desk/eventstore/DeskEventStore.h"

#include "platform/desk/eventstore/CollectionTitle.h"
#include "platform/desk/eventstore/ItemEdits.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/recurrence/Recurrences.h"
#include "platform/files.h"

#include <algorithm>
#include <ctime>
#include <fmt/format.h>
#include <sys/random.h>

namespace mervo::desk {
namespace {

using platform::Authorization;
using platform::Collection;
using platform::Entity;
using platform::Event;
using platform::EventStoreError;
using platform::Reminder;
using std::filesystem::path;

const char* scopeOf(Entity entity)
{
    return entity == Entity::events ? "calendar" : "reminders";
}

std::string newUid()
{
    std::uint8_t random[16] = {};
    if (getrandom(random, sizeof random, 0) != sizeof random)
        throw EventStoreError("The system has no random numbers.");
    random[6] = static_cast<std::uint8_t>((random[6] & 0x0FU) | 0x40U); // RFC 4122, 4.4
    random[8] = static_cast<std::uint8_t>((random[8] & 0x3FU) | 0x80U);
    std::string uid;
    for (std::size_t i = 0; i < sizeof random; ++i)
        uid += fmt::format("{}{:02x}", i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "", random[i]);
    return uid;
}

Collection collectionOf(const VdirCollection& listing)
{
    return {listing.folder.string(), listing.title, listing.color, listing.isWritable};
}

/// An item's name within its collection: a file's name holds no slash.
std::string itemName(std::string_view file, const std::string& uid)
{
    return std::string(file) + '/' + uid;
}

path fileOf(const Collection& collection, const std::string& item)
{
    return path(collection.id) / item.substr(0, item.find('/'));
}

std::string uidOf(const std::string& item)
{
    return item.substr(std::min(item.find('/'), item.size() - 1) + 1);
}

Event eventOf(const Collection& calendar, std::string_view file, const EventRecord& record, const Occurrence& when)
{
    Event event;
    event.item = itemName(file, record.uid);
    event.occurrence = when.key;
    event.calendar = calendar;
    event.uid = record.uid;
    event.title = record.title;
    event.location = record.location;
    event.notes = record.notes;
    event.url = record.url;
    event.recurrence = record.recurrence;
    event.status = record.status;
    event.start = when.start;
    event.end = when.end;
    event.isAllDay = when.isAllDay;
    event.sequence = record.sequence;
    event.stamp = record.stamp;
    return event;
}

platform::DateComponents components(WallTime wall, bool isDate)
{
    const CivilDate date = civilDate(dayOf(wall));
    platform::DateComponents found{date.year, date.month, date.day};
    if (!isDate) {
        const auto second = static_cast<int>(secondOfDay(wall));
        found.time = platform::TimeOfDay{second / 3600, second / 60 % 60, second % 60};
    }
    return found;
}

std::optional<platform::DateComponents> dueOf(const DueRecord& due)
{
    switch (due.kind) {
    case DueRecord::Kind::none:
        return std::nullopt;
    case DueRecord::Kind::date:
    case DueRecord::Kind::floating:
        return components(due.seconds, due.kind == DueRecord::Kind::date);
    case DueRecord::Kind::moment:
        return components(Zone::local()->wallTimeAt(due.seconds), false);
    }
    return std::nullopt;
}

Reminder reminderOf(const Collection& list, std::string_view file, const TaskRecord& task)
{
    Reminder reminder;
    reminder.item = itemName(file, task.uid);
    reminder.list = list;
    reminder.uid = task.uid;
    reminder.title = task.title;
    reminder.notes = task.notes;
    reminder.isCompleted = task.isCompleted;
    reminder.isFlagged = task.isFlagged;
    reminder.priority = task.priority;
    reminder.due = dueOf(task.due);
    reminder.completed = task.completed;
    reminder.created = task.created;
    reminder.modified = task.modified;
    reminder.absoluteAlarms = task.alarms;
    return reminder;
}

/// What rules without an end may cost a call, however many items have one: when some have taken that much, each further
/// one shows its first dates alone.
class EndlessRules {
public:
    Occurrences dates(std::string_view times, platform::TimeSpan span)
    {
        const bool isSpent = shown_ > kMost;
        Occurrences found = occurrences(times, span, isSpent ? kMostDates / 10 : kMostDates);
        if (isSpent && found.isBounded)
            found.all.resize(std::min(found.all.size(), kFew));
        shown_ += found.isBounded ? found.all.size() : 0;
        return found;
    }

private:
    static constexpr std::size_t kMost = 5 * kMostDates, kFew = 10;

    std::size_t shown_ = 0;
};

void addOccurrences(const Collection& calendar, std::string_view file, const ItemRecord& record,
    platform::TimeSpan span, EndlessRules& endless, std::vector<Event>& found)
{
    for (const Occurrence& when : endless.dates(record.times, span).all) {
        if (when.component < record.events.size())
            found.push_back(eventOf(calendar, file, record.events[when.component], when));
    }
}

/// Another item of the same file stays where it is.
void keepOnly(ContentDocument& document, const std::string& uid)
{
    for (const char* name : {"VEVENT", "VTODO", "VJOURNAL"}) {
        for (const auto item : itemsOf(document, name)) {
            if (std::string_view(name) != "VTODO" || document.valueOf(item, "UID").value_or("") != uid)
                document.remove(item);
        }
    }
}

} // namespace

DeskEventStore::DeskEventStore(EventSettings events, EventSettings reminders, path cache, Consent consent)
    : events_(std::move(events))
    , reminders_(std::move(reminders))
    , cache_(std::move(cache))
    , consent_(std::move(consent))
{
}

/// The one place where the errors of the parts become the store's.
template <typename Work>
auto DeskEventStore::guarded(Work work)
{
    try {
        return work();
    } catch (const VdirError& error) {
        throw EventStoreError(error.what());
    } catch (const ConfigurationError& error) {
        throw EventStoreError(error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        throw EventStoreError(fmt::format("Nothing was changed: {}.", error.code().message()));
    }
}

Authorization DeskEventStore::authorization(Entity entity) const
{
    switch (consent_.standing(scopeOf(entity)).decision) {
    case Decision::undecided:
        return Authorization::notDetermined;
    case Decision::allowed:
        return Authorization::fullAccess;
    case Decision::refused:
        return Authorization::denied;
    case Decision::restricted:
        return Authorization::restricted;
    case Decision::writeOnly:
        return Authorization::writeOnly;
    }
    return Authorization::denied;
}

bool DeskEventStore::requestFullAccess(Entity entity, platform::AccessPurpose purpose)
{
    return guarded([&] {
        if (purpose == platform::AccessPurpose::settle) {
            const auto standing = consent_.settle(scopeOf(entity));
            if (!standing.trouble.empty())
                throw EventStoreError(standing.trouble);
            return standing.decision == Decision::allowed;
        }
        const auto verdict = consent_.use(scopeOf(entity));
        if (!verdict.isAllowed && !verdict.why.empty())
            throw EventStoreError(verdict.why);
        return verdict.isAllowed;
    });
}

const DeskEventStore::Folders& DeskEventStore::read(Entity entity)
{
    constexpr int kTries = 3;
    const path& root = settings(entity).root;
    for (int tries = 0; tries < kTries; ++tries) {
        const auto before = commitStamp(root); // first: a commit that begins behind it changes it
        settleVdir(root);
        Folders folders = look(root);
        if (commitStamp(root) == before)
            return read_[root] = std::move(folders);
    }
    const auto held = holdVdir(root); // other programs commit all the time
    return read_[root] = look(root);
}

DeskEventStore::Folders DeskEventStore::look(const path& root)
{
    Folders folders;
    VdirListing found = listVdir(root, ".ics",
        [this](const path& folder, const platform::FileStamp& stamp) { return cache_.names(folder, stamp); });
    if (!found.fault.empty())
        throw EventStoreError(fmt::format("The folder “{}” cannot be read ({}).", root.string(), found.fault));
    for (VdirCollection& listing : found.collections) {
        Folder folder;
        folder.cached = cache_.refresh(listing);
        for (const CachedItem& item : folder.cached->items()) {
            folder.hasEvents = folder.hasEvents || item.hasEvents;
            folder.hasTasks = folder.hasTasks || item.hasTasks;
        }
        folder.listing = std::move(listing);
        folders.push_back(std::move(folder));
    }
    return folders;
}

const DeskEventStore::Folders& DeskEventStore::readOnce(Entity entity)
{
    constexpr std::chrono::milliseconds kHolds(100);
    const path& root = settings(entity).root;
    const auto known = read_.find(root);
    const bool isYoung = listed_ == root && std::chrono::steady_clock::now() - listedAt_ < kHolds;
    return isYoung && known != read_.end() ? known->second : read(entity);
}

std::optional<ItemStamp> DeskEventStore::stampOf(const path& file) const
{
    const std::string name = file.filename().string();
    for (const auto& [root, folders] : read_) {
        for (const Folder& folder : folders) {
            if (folder.listing.folder != file.parent_path())
                continue;
            const auto& items = folder.cached->items();
            const auto found = std::ranges::lower_bound(items, std::string_view(name), {}, &CachedItem::name);
            if (found != items.end() && found->name == name)
                return found->stamp;
        }
    }
    return std::nullopt;
}

path DeskEventStore::rootOf(const path& folder) const
{
    for (const EventSettings* settings : {&events_, &reminders_}) {
        const path relative = folder.lexically_relative(settings->root);
        if (!relative.empty() && *relative.begin() != "..")
            return settings->root;
    }
    throw EventStoreError(fmt::format("“{}” is no folder of the calendars or reminders.", folder.string()));
}

path DeskEventStore::freeFolder(const path& root, const std::string& title) const
{
    const std::string name = folderName(title);
    path folder = root / name;
    for (int number = 2; std::filesystem::exists(folder) || staged_.hasFolder(folder); ++number)
        folder = root / fmt::format("{} {}", name, number);
    return folder;
}

Collection DeskEventStore::defaultAmong(Entity entity, const Folders& folders) const
{
    const EventSettings& ours = settings(entity);
    const VdirCollection* first = nullptr;
    for (const Folder& folder : folders) {
        if (!folder.isOf(entity) || !folder.listing.isWritable)
            continue;
        if (folder.listing.title == ours.defaultTitle)
            return collectionOf(folder.listing);
        if (first == nullptr || folder.listing.title < first->title)
            first = &folder.listing;
    }
    if (first != nullptr && !ours.isDefaultNamed)
        return collectionOf(*first);
    return {freeFolder(ours.root, ours.defaultTitle).string(), ours.defaultTitle, {}, true};
}

std::vector<Collection> DeskEventStore::collections(Entity entity)
{
    return guarded([&] {
        std::vector<Collection> found;
        const Folders& folders = read(entity);
        listed_ = settings(entity).root;
        listedAt_ = std::chrono::steady_clock::now();
        for (const Folder& folder : folders) {
            if (folder.isOf(entity))
                found.push_back(collectionOf(folder.listing));
        }
        const Collection usual = defaultAmong(entity, folders);
        if (std::ranges::find(found, usual.id, &Collection::id) == found.end())
            found.push_back(usual);
        return found;
    });
}

Collection DeskEventStore::defaultCollection(Entity entity)
{
    return guarded([&] { return defaultAmong(entity, read(entity)); });
}

std::vector<Event> DeskEventStore::events(platform::TimeSpan span)
{
    return guarded([&] {
        std::vector<Event> found;
        EndlessRules endless;
        for (const Folder& folder : readOnce(Entity::events)) {
            const Collection calendar = collectionOf(folder.listing);
            for (const CachedItem& item : folder.cached->items()) {
                if (!item.hasEvents || item.first > span.end || item.last < span.start)
                    continue;
                if (const auto record = folder.cached->record(item))
                    addOccurrences(calendar, item.name, *record, span, endless, found);
            }
        }
        return found;
    });
}

std::vector<Event> DeskEventStore::allEvents(const Collection& calendar)
{
    return guarded([&] {
        std::vector<Event> found;
        for (const Folder& folder : readOnce(Entity::events)) {
            if (folder.listing.folder != path(calendar.id))
                continue;
            folder.cached->readRecords();
            for (const CachedItem& item : folder.cached->items()) {
                const auto record = item.hasEvents ? folder.cached->record(item) : std::nullopt;
                if (!record)
                    continue;
                for (Occurrence& when : firstOccurrences(record->times)) {
                    if (when.component >= record->events.size())
                        continue;
                    when.key.clear(); // the whole event is meant
                    found.push_back(
                        eventOf(collectionOf(folder.listing), item.name, record->events[when.component], when));
                }
            }
        }
        return found;
    });
}

std::vector<Reminder> DeskEventStore::reminders(const std::vector<Collection>& lists)
{
    return guarded([&] {
        std::vector<Reminder> found;
        for (const Folder& folder : readOnce(Entity::reminders)) {
            const Collection list = collectionOf(folder.listing);
            if (std::ranges::find(lists, list.id, &Collection::id) == lists.end())
                continue;
            folder.cached->readRecords();
            for (const CachedItem& item : folder.cached->items()) {
                const auto record = item.hasTasks ? folder.cached->record(item) : std::nullopt;
                if (!record)
                    continue;
                for (const TaskRecord& task : record->tasks)
                    found.push_back(reminderOf(list, item.name, task));
            }
        }
        return found;
    });
}

/// The default collection is made with the first item in it.
void DeskEventStore::needFolder(const Collection& collection, Entity entity)
{
    const path folder = collection.id;
    if (staged_.hasFolder(folder) || std::filesystem::is_directory(folder))
        return;
    if (defaultAmong(entity, read(entity)).id != collection.id) {
        throw EventStoreError(
            fmt::format("Nothing was changed: “{}” is not there any more; try again.", collection.title));
    }
    staged_.makeFolder(settings(entity).root, folder, {{"displayname", collection.title}});
}

ContentDocument& DeskEventStore::document(const Collection& collection, const std::string& item)
{
    const path file = fileOf(collection, item);
    return staged_.open(rootOf(path(collection.id)), file, stampOf(file));
}

std::string DeskEventStore::add(const Collection& calendar, const platform::EventChange& event)
{
    return guarded([&] {
        if (!event.start)
            throw EventStoreError("An event needs a start.");
        const std::string uid = newUid();
        const std::int64_t now = std::time(nullptr);
        ContentDocument made(newItem("VEVENT", uid, now));
        desk::change(made, EventPlace{uid, {}}, event, now);
        needFolder(calendar, Entity::events);
        staged_.create(rootOf(calendar.id), path(calendar.id) / (uid + ".ics"), made.text());
        return uid;
    });
}

void DeskEventStore::change(const Event& event, const platform::EventChange& change)
{
    guarded([&] {
        desk::change(document(event.calendar, event.item), EventPlace{uidOf(event.item), event.occurrence}, change,
            std::time(nullptr));
    });
}

void DeskEventStore::remove(const Event& event)
{
    guarded([&] {
        removeEvent(
            document(event.calendar, event.item), EventPlace{uidOf(event.item), event.occurrence}, std::time(nullptr));
    });
}

std::string DeskEventStore::add(const Collection& list, const platform::ReminderChange& reminder)
{
    return guarded([&] {
        const std::string uid = newUid();
        const std::int64_t now = std::time(nullptr);
        ContentDocument made(newItem("VTODO", uid, now));
        desk::change(made, uid, reminder, now);
        made.removeLines(itemsOf(made, "VTODO").at(0), "SEQUENCE"); // nothing has changed since it is there
        needFolder(list, Entity::reminders);
        staged_.create(rootOf(list.id), path(list.id) / (uid + ".ics"), made.text());
        return uid;
    });
}

void DeskEventStore::change(const Reminder& reminder, const platform::ReminderChange& change)
{
    guarded([&] {
        desk::change(document(reminder.list, reminder.item), uidOf(reminder.item), change, std::time(nullptr));
    });
}

void DeskEventStore::move(const Reminder& reminder, const Collection& list)
{
    guarded([&] {
        if (reminder.list.id == list.id)
            return;
        const std::string uid = uidOf(reminder.item);
        ContentDocument& from = document(reminder.list, reminder.item);
        ContentDocument copy(from.text());
        keepOnly(copy, uid);
        removeTask(from, uid);
        path file = path(list.id) / fileOf(reminder.list, reminder.item).filename();
        if (std::filesystem::exists(file))
            file.replace_filename(newUid() + ".ics");
        needFolder(list, Entity::reminders);
        staged_.create(rootOf(list.id), file, copy.text());
    });
}

void DeskEventStore::remove(const Reminder& reminder)
{
    guarded([&] { removeTask(document(reminder.list, reminder.item), uidOf(reminder.item)); });
}

Collection DeskEventStore::addCollection(Entity entity, const std::string& title)
{
    return guarded([&] {
        const std::string line = oneLine(title);
        const path folder = freeFolder(settings(entity).root, line);
        staged_.makeFolder(settings(entity).root, folder, {{"displayname", line}});
        return Collection{folder.string(), line, {}, true};
    });
}

void DeskEventStore::rename(const Collection& collection, const std::string& title)
{
    guarded([&] {
        const std::string line = oneLine(title);
        const path folder = collection.id;
        if (!std::filesystem::is_directory(folder) && !staged_.hasFolder(folder))
            staged_.makeFolder(rootOf(folder), folder, {});
        staged_.setMetadata(rootOf(folder), folder / "displayname", line);
    });
}

void DeskEventStore::setColor(const Collection& collection, const std::string& color)
{
    guarded([&] {
        const path folder = collection.id;
        if (!color.empty() && readColor(color).empty())
            throw EventStoreError("Nothing was changed: a color is written as #rrggbb.");
        if (!std::filesystem::is_directory(folder) && !staged_.hasFolder(folder))
            staged_.makeFolder(rootOf(folder), folder, {{"displayname", collection.title}});
        staged_.setMetadata(rootOf(folder), folder / "color", color);
    });
}

/// The folder goes when nothing else is in it. Else the items of this kind do, and what other programs put there stays.
void DeskEventStore::remove(const Collection& collection, Entity entity)
{
    guarded([&] {
        const path folder = collection.id, root = rootOf(folder);
        std::map<std::string, std::string> contents;
        bool isKept = folder == root;
        if (staged_.hasFolder(folder) && !std::filesystem::exists(folder))
            return staged_.removeFolder(root, folder, {});
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with('.'))
                continue;
            std::string why;
            const auto found = readItem(entry.path(), why);
            const bool isItem = entry.path().extension() == ".ics";
            isKept = isKept || !found || (!isItem && name != "displayname" && name != "color");
            if (!found)
                continue;
            contents[name] = found->bytes;
            if (isItem) {
                ContentDocument& document = staged_.open(root, entry.path(), stampOf(entry.path()));
                removeAll(document, entity);
                isKept = isKept || holdsItems(document);
            }
        }
        if (!isKept)
            staged_.removeFolder(root, folder, contents);
    });
}

void DeskEventStore::commit()
{
    guarded([&] {
        StagedItems staged = std::move(staged_);
        staged_ = StagedItems();
        read_.clear();
        staged.commit();
    });
}

} // namespace mervo::desk
