#include "platform/desk/applications/systemevents/SystemEventsApplication.h"

#include <utility>

namespace mervo::desk {
namespace {

using applescript::ClassTerm;
using applescript::Designation;
using applescript::kSettable;
using applescript::makeRef;
using applescript::Ref;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

enum Class : TermId { process = 1, applicationProcess };
enum Property : TermId { unixId = 1, frontmost, visible, backgroundOnly, bundleIdentifier };

/// System Events itself, or one running application.
class EventsObject final : public applescript::Object {
public:
    explicit EventsObject(SystemEventsApplication& events)
        : events_(events)
        , class_(CommonTerm::applicationClass)
    {
    }
    EventsObject(SystemEventsApplication& events, DeskApplication which)
        : events_(events)
        , class_(applicationProcess)
        , which_(which)
    {
    }

    applescript::Application& application() const override { return events_; }
    const ClassTerm& objectClass() const override { return *systemEventsDictionary().findClass(class_); }

    Designation designation() const override
    {
        if (class_ == CommonTerm::applicationClass)
            return {};
        return {Designation::Form::name, objectClass().name, Value::text(identity().name), {}};
    }

    Value get(TermId property) override
    {
        switch (property) {
        case unixId:
            return Value::integer(events_.running().processOf(which_));
        case frontmost:
        case visible:
            return Value::boolean(false); // no window of the desk's own
        case backgroundOnly:
            return Value::boolean(alwaysRuns(which_));
        case bundleIdentifier:
            return Value::text(identity().bundleId);
        default:
            return Value::text(identity().name);
        }
    }

    Value every(TermId) override
    {
        const RunningApplications running = events_.running();
        std::vector<Value> found;
        for (const ApplicationIdentity& each : applicationIdentities()) {
            if (running.isRunning(each.application))
                found.push_back(Value::object(makeRef<EventsObject>(events_, each.application)));
        }
        return Value::list(std::move(found));
    }

    Value named(TermId, std::string_view name) override
    {
        const auto wanted = applicationNamed(name);
        if (!wanted || !events_.running().isRunning(*wanted))
            return Value();
        return Value::object(makeRef<EventsObject>(events_, *wanted));
    }

    bool exists() override { return events_.running().isRunning(which_); }

private:
    const ApplicationIdentity& identity() const { return identityOf(which_); }

    SystemEventsApplication& events_;
    TermId class_;
    DeskApplication which_ = DeskApplication::systemEvents;
};

std::vector<ClassTerm> classes()
{
    return {
        {CommonTerm::applicationClass, "application", "applications", {}, {process, applicationProcess}},
        {process, "process", "processes",
            {{CommonTerm::name, "name"}, {unixId, "unix id"}, {frontmost, "frontmost", kSettable},
                {visible, "visible", kSettable}, {backgroundOnly, "background only"},
                {bundleIdentifier, "bundle identifier"}}},
        {applicationProcess, "application process", "application processes", {}, {}, process},
    };
}

} // namespace

const applescript::Dictionary& systemEventsDictionary()
{
    static const applescript::Dictionary dictionary("System Events", classes());
    return dictionary;
}

const applescript::Dictionary& SystemEventsApplication::dictionary() const
{
    return systemEventsDictionary();
}

Ref<applescript::Object> SystemEventsApplication::root()
{
    return makeRef<EventsObject>(*this);
}

void registerSystemEvents(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"System Events"}, "com.apple.systemevents", systemEventsDictionary,
        [sections] { return std::make_unique<SystemEventsApplication>(sections); });
}

} // namespace mervo::desk
