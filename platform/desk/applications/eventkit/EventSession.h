#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/eventkit/Look.h"
#include "platform/eventkit.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

/// One script's use of the owner's store of events or reminders. The store is opened when it is first needed. What was
/// read holds for half a second or until the script changes something, so that a loop over thousands of handles does
/// not read the whole calendar at each of them.
///
/// What the store cannot do is -10000 with its sentence.
class EventSession {
public:
    using Open = std::function<std::unique_ptr<platform::EventStore>()>;

    EventSession(platform::Entity entity, Open open);

    template <typename Item>
    using Seen = std::shared_ptr<const Look<Item>>;

    Seen<platform::Collection> collections(); ///< by title
    platform::Collection defaultCollection();
    Seen<platform::Event> events(const platform::Collection& calendar); ///< by start
    Seen<platform::Reminder> reminders(const platform::Collection& list); ///< in the order in which they were made
    Seen<platform::Reminder> reminders(); ///< of all lists, likewise

    /// Makes a collection named as a script says. -10000 with the refusal without a name.
    platform::Collection makeCollection(const applescript::MakeRequest& request, const char* refusal);
    /// -10000 when it cannot be written.
    void removeCollection(const platform::Collection& gone);

    /// Stages changes and makes them real. When that fails nothing of them stays staged.
    void change(const std::function<void(platform::EventStore&)>& stage);
    /// Makes real at its end, in one commit, what `changes` has staged by change(): all of it or nothing.
    void together(const std::function<void()>& changes);

private:
    template <typename Item>
    struct Kept {
        Seen<Item> look;
        std::chrono::steady_clock::time_point taken;
    };
    template <typename Item>
    using KeptByCollection = std::unordered_map<std::string, Kept<Item>>;

    template <typename Item, typename Read>
    Seen<Item> look(Kept<Item>& kept, const Read& read);
    void commitAfter(const std::function<void()>& staging);
    void forget();
    Seen<platform::Reminder> remindersOf(const std::string& key, const std::vector<platform::Collection>& lists);
    platform::EventStore& store();

    platform::Entity entity_;
    Open open_;
    std::unique_ptr<platform::EventStore> store_;
    bool isTogether_ = false; // another call commits
    Kept<platform::Collection> collections_;
    KeptByCollection<platform::Event> events_;
    KeptByCollection<platform::Reminder> reminders_;
};

} // namespace mervo::desk
