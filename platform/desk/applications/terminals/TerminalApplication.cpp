#include "platform/desk/applications/terminals/TerminalApplication.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/desk/applications/terminals/TerminalObjects.h"
#include "platform/desk/terminal/OwnerTerminal.h"
#include "platform/desk/terminal/TerminalError.h"
#include "platform/desk/terminal/TerminalSessions.h"

#include <algorithm>

namespace mervo::desk {
namespace {

using applescript::makeRef;
using applescript::ScriptError;
using applescript::Value;
namespace ErrorNumber = applescript::ErrorNumber;

/// Runs the work; what fails in it is an error of the script.
template <typename Work>
auto scripted(Work&& work)
{
    try {
        return work();
    } catch (const TerminalError& error) {
        throw ScriptError(ErrorNumber::handlerFailed, error.what());
    } catch (const ConfigurationError& error) {
        throw ScriptError(ErrorNumber::handlerFailed, error.what());
    }
}

} // namespace

applescript::Ref<applescript::Object> TerminalApplication::root()
{
    return makeRef<TerminalObject>(*this);
}

bool TerminalApplication::isRunning() const
{
    return isLaunched_ || !livingSessions(name_).empty();
}

void TerminalApplication::quit(applescript::Saving)
{
    throw ScriptError(ErrorNumber::handlerFailed,
        name_ + " does not quit for a script; close its windows, or leave them to the owner.");
}

void TerminalApplication::close(applescript::Object& object, applescript::Saving)
{
    auto& what = dynamic_cast<TerminalObject&>(object);
    if (Window* window = find(what.id()); window == nullptr || window->isOpen) {
        scripted([&] { closeSession(what.id()); });
    } else {
        std::erase_if(windows_, [&](const Window& each) { return each.id == what.id(); });
    }
}

Value TerminalApplication::perform(const applescript::CommandCall& call)
{
    if (call.command == TerminalTerm::createWindow)
        return create();
    write(call);
    return Value();
}

void TerminalApplication::finish()
{
    for (Window& window : windows_) {
        if (!window.isOpen)
            open(window, "");
    }
}

std::vector<std::string> TerminalApplication::windowIds()
{
    look();
    std::vector<std::string> ids;
    std::ranges::transform(windows_, std::back_inserter(ids), &Window::id);
    return ids;
}

bool TerminalApplication::isThere(const std::string& id)
{
    const Window* window = find(id);
    return window != nullptr && (!window->isOpen || livingSession(id));
}

std::string TerminalApplication::ttyOf(const std::string& id)
{
    if (Window* window = find(id); window != nullptr && !window->isOpen)
        open(*window, "");
    const auto record = livingSession(id);
    if (!record)
        throw ScriptError(ErrorNumber::noSuchObject);
    return record->tty;
}

std::optional<Bounds> TerminalApplication::boundsOf(const std::string& id) const
{
    const auto found = std::ranges::find(windows_, id, &Window::id);
    return found == windows_.end() ? std::nullopt : found->bounds;
}

void TerminalApplication::place(const std::string& id, const Bounds& bounds)
{
    Window* window = find(id);
    if (window == nullptr)
        throw ScriptError(ErrorNumber::noSuchObject);
    window->bounds = bounds;
    if (window->isOpen)
        placeSession(id, bounds);
}

void TerminalApplication::look()
{
    if (hasLooked_)
        return;
    hasLooked_ = true;
    for (const SessionRecord& session : livingSessions(name_)) {
        if (find(session.id) == nullptr)
            windows_.push_back({.id = session.id});
    }
}

TerminalApplication::Window* TerminalApplication::find(const std::string& id)
{
    const auto found = std::ranges::find(windows_, id, &Window::id);
    return found == windows_.end() ? nullptr : &*found;
}

void TerminalApplication::open(Window& window, const std::string& text)
{
    window.isOpen = true; // or never: a window that did not open is not tried again
    scripted([&] {
        openSession(ownerTerminal(Configuration::load(sections_)),
            {.id = window.id, .request = {.application = name_, .text = text}, .bounds = window.bounds});
    });
}

Value TerminalApplication::create()
{
    Window window{.id = scripted([&] {
        requireDisplay(); // what cannot come is said now, not when it is written to
        ownerTerminal(Configuration::load(sections_));
        return newSessionId();
    })};
    window.isOpen = false;
    Value made = Value::object(makeRef<TerminalObject>(*this, TerminalTerm::window, window.id));
    windows_.insert(windows_.begin(), std::move(window));
    return made;
}

/// To a session, or to the one in front of what else is meant.
void TerminalApplication::write(const applescript::CommandCall& call)
{
    const auto* target = dynamic_cast<const TerminalObject*>(call.target.get());
    const std::string id = target != nullptr ? target->id() : std::string();
    Window* window = find(id);
    if (window == nullptr)
        throw ScriptError(ErrorNumber::handlerFailed, "Text is written to a session.");
    if (window->isOpen)
        throw ScriptError(ErrorNumber::handlerFailed,
            "The session runs what was written to it first; nothing more can be typed into it from here.");
    open(*window, applescript::toString(call.direct));
}

void registerTerminals(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"iTerm2", "iTerm"}, "com.googlecode.iterm2", itermDictionary,
        [sections] { return std::make_unique<TerminalApplication>("iTerm2", itermDictionary, sections); });
    registry.add({"Terminal"}, "com.apple.Terminal", terminalDictionary,
        [sections] { return std::make_unique<TerminalApplication>("Terminal", terminalDictionary, sections); });
}

} // namespace mervo::desk
