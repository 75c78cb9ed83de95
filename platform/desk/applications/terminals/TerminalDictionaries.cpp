#include "platform/desk/applications/terminals/TerminalDictionaries.h"

namespace mervo::desk {

using applescript::ClassTerm;
using applescript::CommandTerm;
using applescript::Dictionary;
using applescript::kSettable;
using applescript::PropertyTerm;
namespace CommonTerm = applescript::CommonTerm;
using namespace TerminalTerm;

namespace {

const PropertyTerm kBounds{bounds, "bounds", kSettable};
const PropertyTerm kTty{tty, "tty"};

} // namespace

const Dictionary& itermDictionary()
{
    const PropertyTerm current{currentSession, "current session"};
    static const Dictionary dictionary("iTerm2",
        {
            {CommonTerm::applicationClass, "application", "applications", {}, {window}},
            {window, "window", "windows", {kBounds, {currentTab, "current tab"}, current}, {tab}},
            {tab, "tab", "tabs", {current}, {session}},
            {session, "session", "sessions", {{CommonTerm::id, "id"}, kTty}},
        },
        {{createWindow, "create window with default profile", {}, CommandTerm::Direct::none},
            {writeText, "write text"}});
    return dictionary;
}

const Dictionary& terminalDictionary()
{
    static const Dictionary dictionary("Terminal",
        {
            {CommonTerm::applicationClass, "application", "applications", {}, {window}},
            {window, "window", "windows", {kBounds, {selectedTab, "selected tab"}}, {tab}},
            {tab, "tab", "tabs", {kTty}},
        });
    return dictionary;
}

} // namespace mervo::desk
