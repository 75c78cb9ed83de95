#include "platform/desk/applications/eventkit/EventSession.h"

#include "platform/applescript/values/ScriptError.h"
#include "platform/desk/applications/eventkit/EventValues.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace mervo::desk {
namespace {

using applescript::ScriptError;
using platform::Collection;
using platform::Event;
using platform::Reminder;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kHolds{500};

template <typename Work>
auto inScriptTerms(const Work& work) -> decltype(work())
{
    try {
        return work();
    } catch (const platform::EventStoreError& error) {
        throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
}

} // namespace

EventSession::EventSession(platform::Entity entity, Open open)
    : entity_(entity)
    , open_(std::move(open))
{
}

platform::EventStore& EventSession::store()
{
    if (!store_)
        store_ = inScriptTerms(open_);
    return *store_;
}

template <typename Item, typename Read>
EventSession::Seen<Item> EventSession::look(Kept<Item>& kept, const Read& read)
{
    if (!kept.look || Clock::now() - kept.taken > kHolds) {
        kept.look = std::make_shared<const Look<Item>>(inScriptTerms(read));
        kept.taken = Clock::now();
    }
    return kept.look;
}

EventSession::Seen<Collection> EventSession::collections()
{
    return look(collections_, [this] {
        std::vector<Collection> found = store().collections(entity_);
        std::ranges::sort(found, {}, [](const Collection& each) { return std::tie(each.title, each.id); });
        return found;
    });
}

Collection EventSession::defaultCollection()
{
    return inScriptTerms([this] { return store().defaultCollection(entity_); });
}

EventSession::Seen<Event> EventSession::events(const Collection& calendar)
{
    return look(events_[calendar.id], [&] {
        std::vector<Event> found = store().allEvents(calendar);
        std::ranges::sort(found, {}, [](const Event& each) { return std::tie(each.start, each.title, each.item); });
        return found;
    });
}

EventSession::Seen<Reminder> EventSession::reminders(const Collection& list)
{
    return remindersOf(list.id, {list});
}

EventSession::Seen<Reminder> EventSession::reminders()
{
    return remindersOf({}, collections()->items());
}

EventSession::Seen<Reminder> EventSession::remindersOf(const std::string& key, const std::vector<Collection>& lists)
{
    return look(reminders_[key], [&] {
        std::vector<Reminder> found = store().reminders(lists);
        std::ranges::sort(found, {},
            [](const Reminder& each) { return std::tie(each.list.title, each.list.id, each.created, each.item); });
        return found;
    });
}

void EventSession::forget()
{
    collections_ = {};
    events_.clear();
    reminders_.clear();
}

Collection EventSession::makeCollection(const applescript::MakeRequest& request, const char* refusal)
{
    const applescript::Value* name = request.property(applescript::CommonTerm::name);
    const std::string title = name == nullptr ? std::string() : EventValues::textOf(*name);
    if (title.empty())
        EventValues::refuse(refusal);
    Collection made;
    change([&](platform::EventStore& store) { made = store.addCollection(entity_, title); });
    return made;
}

void EventSession::removeCollection(const Collection& gone)
{
    EventValues::requireWritable(gone);
    change([&](platform::EventStore& store) { store.remove(gone, entity_); });
}

void EventSession::change(const std::function<void(platform::EventStore&)>& stage)
{
    commitAfter([&] { stage(store()); });
}

void EventSession::together(const std::function<void()>& changes)
{
    commitAfter([&] {
        isTogether_ = true;
        changes();
        isTogether_ = false;
    });
}

void EventSession::commitAfter(const std::function<void()>& staging)
{
    const bool isPart = isTogether_;
    try {
        inScriptTerms([&] {
            staging();
            if (!isPart)
                store().commit();
        });
    } catch (...) {
        forget();
        if (!isPart) {
            isTogether_ = false;
            store_.reset(); // and with it what it has staged
        }
        throw;
    }
    if (!isPart)
        forget();
}

} // namespace mervo::desk
