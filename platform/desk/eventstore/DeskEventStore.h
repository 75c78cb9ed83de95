#pragma once

#include "platform/desk/consent/Consent.h"
#include "platform/desk/events/EventSettings.h"
#include "platform/desk/eventstore/ItemCache.h"
#include "platform/desk/eventstore/ItemRecord.h"
#include "platform/desk/eventstore/StagedItems.h"
#include "platform/eventkit.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mervo::desk {

/// The store of events and reminders over folders of .ics files. A collection's id is its folder; an item within it is
/// the file's name and the UID. Changes are staged in memory; what is read is what lies on the disk.
class DeskEventStore final : public platform::EventStore {
public:
    using Entity = platform::Entity;
    using Collection = platform::Collection;

    DeskEventStore(EventSettings events, EventSettings reminders, std::filesystem::path cache, Consent consent);

    platform::Authorization authorization(Entity entity) const override;
    bool requestFullAccess(Entity entity, platform::AccessPurpose purpose) override;

    std::vector<Collection> collections(Entity entity) override;
    Collection defaultCollection(Entity entity) override;

    std::vector<platform::Event> events(platform::TimeSpan span) override;
    std::vector<platform::Event> allEvents(const Collection& calendar) override;
    std::vector<platform::Reminder> reminders(const std::vector<Collection>& lists) override;

    std::string add(const Collection& calendar, const platform::EventChange& event) override;
    void change(const platform::Event& event, const platform::EventChange& change) override;
    void remove(const platform::Event& event) override;

    std::string add(const Collection& list, const platform::ReminderChange& reminder) override;
    void change(const platform::Reminder& reminder, const platform::ReminderChange& change) override;
    void move(const platform::Reminder& reminder, const Collection& list) override;
    void remove(const platform::Reminder& reminder) override;

    Collection addCollection(Entity entity, const std::string& title) override;
    void rename(const Collection& collection, const std::string& title) override;
    void setColor(const Collection& collection, const std::string& color) override;
    void remove(const Collection& collection, Entity entity) override;

    void commit() override;

private:
    struct Folder {
        VdirCollection listing;
        std::shared_ptr<const CachedCollection> cached;
        bool hasEvents = false, hasTasks = false;
        bool isOf(Entity entity) const
        {
            return entity == Entity::events ? hasEvents || !hasTasks : hasTasks || !hasEvents;
        }
    };
    using Folders = std::vector<Folder>;

    const EventSettings& settings(Entity entity) const { return entity == Entity::events ? events_ : reminders_; }
    /// The folders below the root of an entity, as they are now: with all of a commit or nothing of it.
    const Folders& read(Entity entity);
    Folders look(const std::filesystem::path& root);
    /// The same, from the look that collections() has just taken where there is one: who asks for the collections asks
    /// for their items next.
    const Folders& readOnce(Entity entity);
    /// What was read last; nothing for what was not read.
    std::optional<ItemStamp> stampOf(const std::filesystem::path& file) const;
    std::filesystem::path rootOf(const std::filesystem::path& folder) const;
    std::filesystem::path freeFolder(const std::filesystem::path& root, const std::string& title) const;
    void needFolder(const Collection& collection, Entity entity);
    Collection defaultAmong(Entity entity, const Folders& folders) const;
    ContentDocument& document(const Collection& collection, const std::string& item);
    template <typename Work>
    auto guarded(Work work);

    EventSettings events_, reminders_;
    ItemCache cache_;
    Consent consent_;
    std::map<std::filesystem::path, Folders> read_; // by root
    std::filesystem::path listed_; // the root that collections() looked at
    std::chrono::steady_clock::time_point listedAt_;
    StagedItems staged_;
};

} // namespace mervo::desk
