#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/terminals/TerminalDictionaries.h"
#include "platform/desk/settings/Configuration.h"
#include "platform/desk/terminal/KnownTerminals.h"

#include <optional>
#include <string>
#include <vector>

namespace mervo::desk {

/// "iTerm2" and "Terminal": the windows of the owner's terminal that were opened under that name.
///
/// A window that a script creates opens with the first text that is written to its session, or when the script ends, so
/// that its place is known by then. The text is run once, by the session's shell; what would be typed into a session
/// that runs already is refused. A script sees the windows that were there when it first looked, newest first, and its
/// own: one that closes meanwhile stays in the list, without a tab, so that a loop passes over no other.
class TerminalApplication final : public applescript::Application {
public:
    using Words = const applescript::Dictionary& (*)();

    /// `name` as the registry of sessions has it. `sections` must outlive it.
    TerminalApplication(std::string name, Words words, Sections sections)
        : name_(std::move(name))
        , words_(words)
        , sections_(sections)
    {
    }

    const applescript::Dictionary& dictionary() const override { return words_(); }
    applescript::Ref<applescript::Object> root() override;
    bool isRunning() const override;
    void launch() override { isLaunched_ = true; }
    /// Refused: what runs in the windows may be an agent's.
    void quit(applescript::Saving saving) override;
    void close(applescript::Object& object, applescript::Saving saving) override;
    applescript::Value perform(const applescript::CommandCall& call) override;
    void finish() override;

    // For the objects; each throws ScriptError.
    std::vector<std::string> windowIds();
    bool isThere(const std::string& id);
    /// Empty when it has none. -1728 for a session that has ended.
    std::string ttyOf(const std::string& id);
    /// What this script has set; the desktop has the last word.
    std::optional<Bounds> boundsOf(const std::string& id) const;
    void place(const std::string& id, const Bounds& bounds);

private:
    struct Window {
        std::string id;
        bool isOpen = true;
        std::optional<Bounds> bounds = {};
    };

    void look();
    Window* find(const std::string& id);
    void open(Window& window, const std::string& text);
    applescript::Value create();
    void write(const applescript::CommandCall& call);

    std::string name_;
    Words words_;
    Sections sections_;
    std::vector<Window> windows_;
    bool hasLooked_ = false;
    bool isLaunched_ = false;
};

/// Makes both known to the script host. `sections` must outlive the registry.
void registerTerminals(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
