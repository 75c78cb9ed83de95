#pragma once

#include "platform/applescript/values/Object.h"
#include "platform/desk/applications/eventkit/EventSession.h"
#include "platform/desk/applications/reminders/RemindersApplication.h"
#include "platform/eventkit.h"

#include <functional>
#include <memory>
#include <optional>

/// Reminders' account, lists, reminders and the application itself, as objects of the script host.
namespace mervo::desk {

/// The base of all of them.
class RemindersObject : public applescript::Object {
public:
    RemindersObject(RemindersApplication& owner, applescript::TermId objectClass) noexcept
        : owner_(owner)
        , class_(objectClass)
    {
    }

    applescript::Application& application() const override { return owner_; }
    const applescript::ClassTerm& objectClass() const override;
    RemindersApplication& owner() const noexcept { return owner_; }
    EventSession& session() const noexcept { return owner_.session(); }

private:
    RemindersApplication& owner_;
    applescript::TermId class_;
};

/// The application, or its one account: both have all lists and all reminders.
class AllListsObject final : public RemindersObject {
public:
    AllListsObject(RemindersApplication& owner, applescript::TermId objectClass);
    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
};

class ListObject final : public RemindersObject {
public:
    ListObject(RemindersApplication& owner, platform::Collection list);
    /// As it stands now. -1728 when it is gone.
    platform::Collection current() const;

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    applescript::Value every(applescript::TermId elementClass) override;
    std::size_t count(applescript::TermId elementClass) override;
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
    bool exists() override;
    bool isSame(const applescript::Object& other) const override;

private:
    platform::Collection list_;
};

class ReminderObject final : public RemindersObject {
public:
    /// `reminder` is one of the look, which it keeps alive.
    ReminderObject(
        RemindersApplication& owner, EventSession::Seen<platform::Reminder> look, const platform::Reminder& reminder);
    const std::string& uid() const noexcept { return reminder_->uid; }
    const platform::Collection& list() const noexcept { return reminder_->list; }

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    bool exists() override;
    bool isSame(const applescript::Object& other) const override;
    void remove();
    void moveTo(const platform::Collection& list);

private:
    /// Of the reminder as this handle knows it: a loop over many does not look at them all again after each.
    void change(const std::function<void(platform::EventStore&)>& stage);

    EventSession::Seen<platform::Reminder> look_;
    const platform::Reminder* reminder_;
};

/// Puts what a script gives for a property into a change of a reminder. -10006 for what the property cannot be.
void takeProperty(platform::ReminderChange& change, applescript::TermId property, const applescript::Value& value);

} // namespace mervo::desk
