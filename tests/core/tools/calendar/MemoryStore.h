#pragma once

#include "core/tools/calendar/EventKitAccess.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace mervo::test {

/// A store whose items a test gives, and which says what was asked of it: a word for each change, then "commit".
struct MemoryStore {
    using Authorization = platform::Authorization;
    using Collection = platform::Collection;

    Authorization authorization = Authorization::fullAccess;
    bool isGranted = false; ///< what a request answers
    std::string failedRequest = {}; ///< what it fails with
    std::string failedCommit = {};
    std::vector<Collection> collections = {};
    std::vector<platform::Event> events = {};
    std::vector<platform::Reminder> reminders = {};

    std::vector<std::string> done = {};
    platform::TimeSpan span = {};
    platform::EventChange eventChange = {};
    platform::ReminderChange reminderChange = {};

    EventKitAccess::OpenStore opener();
};

/// One opening of it.
class OpenMemoryStore final : public platform::EventStore {
public:
    explicit OpenMemoryStore(MemoryStore& kept)
        : kept_(kept)
    {
        note("open");
    }

    platform::Authorization authorization(platform::Entity) const override { return kept_.authorization; }
    bool requestFullAccess(platform::Entity entity, platform::AccessPurpose) override
    {
        note(entity == platform::Entity::events ? "request events" : "request reminders");
        failWith(kept_.failedRequest);
        return kept_.isGranted;
    }

    std::vector<platform::Collection> collections(platform::Entity) override { return kept_.collections; }
    platform::Collection defaultCollection(platform::Entity) override { return kept_.collections.front(); }
    std::vector<platform::Event> events(platform::TimeSpan span) override
    {
        kept_.span = span;
        return kept_.events;
    }
    std::vector<platform::Event> allEvents(const platform::Collection&) override { return kept_.events; }
    std::vector<platform::Reminder> reminders(const std::vector<platform::Collection>& lists) override
    {
        std::vector<platform::Reminder> found = kept_.reminders;
        std::erase_if(found, [&](const platform::Reminder& reminder) {
            return std::ranges::find(lists, reminder.list.id, &platform::Collection::id) == lists.end();
        });
        return found;
    }

    std::string add(const platform::Collection&, const platform::EventChange&) override { return {}; }
    void change(const platform::Event& event, const platform::EventChange& change) override
    {
        kept_.eventChange = change;
        note("change " + event.item);
    }
    void remove(const platform::Event& event) override { note("remove " + event.item); }
    std::string add(const platform::Collection&, const platform::ReminderChange&) override { return {}; }
    void change(const platform::Reminder& reminder, const platform::ReminderChange& change) override
    {
        kept_.reminderChange = change;
        note("change " + reminder.item);
    }
    void move(const platform::Reminder&, const platform::Collection&) override { }
    void remove(const platform::Reminder& reminder) override { note("remove " + reminder.item); }
    platform::Collection addCollection(platform::Entity, const std::string&) override { return {}; }
    void rename(const platform::Collection&, const std::string&) override { }
    void setColor(const platform::Collection&, const std::string&) override { }
    void remove(const platform::Collection& collection, platform::Entity) override { note("remove " + collection.id); }
    void commit() override
    {
        failWith(kept_.failedCommit);
        note("commit");
    }

private:
    void note(std::string what) { kept_.done.push_back(std::move(what)); }
    static void failWith(const std::string& sentence)
    {
        if (!sentence.empty())
            throw platform::EventStoreError(sentence);
    }

    MemoryStore& kept_;
};

inline EventKitAccess::OpenStore MemoryStore::opener()
{
    return [this] { return std::make_unique<OpenMemoryStore>(*this); };
}

/// What a call gives, or what it fails with behind "error: ".
template <typename Call>
std::string outcome(const Call& call)
{
    try {
        return call();
    } catch (const std::exception& error) {
        return std::string("error: ") + error.what();
    }
}

} // namespace mervo::test
