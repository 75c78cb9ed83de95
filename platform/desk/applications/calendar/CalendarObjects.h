#pragma once

#include "platform/applescript/values/Object.h"
#include "platform/desk/applications/calendar/CalendarApplication.h"
#include "platform/desk/applications/eventkit/EventSession.h"
#include "platform/eventkit.h"

#include <functional>
#include <memory>
#include <utility>

/// Calendar's calendars, events and the application itself, as objects of the script host.
namespace mervo::desk {

/// The base of all of them.
class CalendarAppObject : public applescript::Object {
public:
    CalendarAppObject(CalendarApplication& owner, applescript::TermId objectClass) noexcept
        : owner_(owner)
        , class_(objectClass)
    {
    }

    applescript::Application& application() const override { return owner_; }
    const applescript::ClassTerm& objectClass() const override;
    CalendarApplication& owner() const noexcept { return owner_; }
    EventSession& session() const noexcept { return owner_.session(); }

private:
    CalendarApplication& owner_;
    applescript::TermId class_;
};

class CalendarRootObject final : public CalendarAppObject {
public:
    explicit CalendarRootObject(CalendarApplication& owner);
    applescript::Designation designation() const override { return {}; }
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
};

class CalendarObject final : public CalendarAppObject {
public:
    CalendarObject(CalendarApplication& owner, platform::Collection calendar);
    /// As it stands now. -1728 when it is gone.
    platform::Collection current() const;

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    applescript::Value every(applescript::TermId elementClass) override;
    std::size_t count(applescript::TermId elementClass) override;
    applescript::Value withId(applescript::TermId elementClass, const applescript::Value& id) override;
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
    bool exists() override;
    bool isSame(const applescript::Object& other) const override;

private:
    platform::Collection calendar_;
};

class EventObject final : public CalendarAppObject {
public:
    /// `event` is one of the look, which it keeps alive.
    EventObject(applescript::Ref<CalendarObject> calendar, EventSession::Seen<platform::Event> look,
        const platform::Event& event);
    /// As it stands now. -1728 when it is gone.
    const platform::Event& current();
    const CalendarObject& calendar() const noexcept { return *calendar_; }

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    bool exists() override;
    bool isSame(const applescript::Object& other) const override;
    void remove();

private:
    /// Of the event as this handle knows it: a loop over many does not look at them all again after each.
    void change(const std::function<void(platform::EventStore&)>& stage);

    applescript::Ref<CalendarObject> calendar_;
    EventSession::Seen<platform::Event> look_;
    const platform::Event* event_;
};

/// Puts what a script gives for a property into a change of an event. -10006 for what the property cannot be.
void takeProperty(platform::EventChange& change, applescript::TermId property, const applescript::Value& value);

} // namespace mervo::desk
