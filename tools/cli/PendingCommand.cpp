#include "core/catalogue/Tools.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"
#include "core/policy/Remarks.h"
#include "platform/unicode.h"
#include "tools/cli/Commands.h"
#include "tools/cli/Json.h"

#include <array>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

constexpr std::array kOptions{kJson};
constexpr std::size_t kLineLimit = 120; ///< characters of a call in the list

constexpr std::string_view kHelp =
    R"(Lists the actions that wait for the owner, oldest first: id, time, and the call. With an id: that action whole, with every
argument, and which of them have no effect. --json prints an array of the stored objects, with "remarks" on the arguments
where there are any. It only reads: an action is approved or rejected by a person, in
the cockpit.

Examples:
  mervo pending
  mervo pending 5D0C2A91
)";

/// One line; a cut is announced with the length.
std::string shortened(const std::string& text)
{
    const std::size_t length = platform::countCharacters(text);
    const std::string line = Text::visibleLine(Text::cut(text, kLineLimit));
    return length > kLineLimit ? fmt::format("{} ({} characters)", line, length) : line;
}

std::string list(const std::vector<PendingAction>& actions)
{
    if (actions.empty())
        return "Nothing is waiting.\n";
    std::string text;
    for (const PendingAction& action : actions) {
        text += fmt::format(
            "{}  {}  {}\n", Text::visibleLine(action.id), Text::visibleLine(action.createdAt), action.line(kLineLimit));
        if (action.preview)
            text += fmt::format("          {}\n", shortened(*action.preview));
    }
    return text;
}

/// Nothing for a tool that is no longer in the catalogue.
std::vector<Remark> remarksOn(const PendingAction& action)
{
    const Tool* const tool = Tools::find(action.tool);
    return tool == nullptr ? std::vector<Remark>() : Remarks::of(*tool, action.args);
}

std::string page(const PendingAction& action)
{
    const std::vector<Remark> remarks = remarksOn(action);
    std::string text = fmt::format("{}  {}  {}\n", Text::visibleLine(action.id), Text::visibleLine(action.createdAt),
        Text::visibleLine(action.tool));
    if (action.preview)
        text += fmt::format("{}\n", Text::visibleLine(*action.preview));
    for (const auto& [key, value] : action.args) {
        text += fmt::format("  {}={}\n", Text::visibleLine(key), Text::visibleLine(value));
        for (const Remark& remark : remarks)
            if (remark.argument == key)
                text += fmt::format("      {}{}\n", remark.noEffect ? "no effect: " : "", remark.sentence);
    }
    return text;
}

/// The stored object, and the remarks on its arguments where there are any.
std::string object(const PendingAction& action)
{
    auto object = nlohmann::ordered_json::parse(action.encode());
    for (const Remark& remark : remarksOn(action))
        object["remarks"].push_back(
            {{"argument", remark.argument}, {"sentence", remark.sentence}, {"noEffect", remark.noEffect}});
    return object.dump();
}

std::string json(const std::vector<PendingAction>& actions)
{
    std::vector<std::string> objects;
    for (const PendingAction& action : actions)
        objects.push_back(object(action));
    return withEscapes(fmt::format("[{}]", Text::join(objects, ","))) + "\n";
}

ExitCode run(const Arguments& arguments, Io& io)
{
    std::vector<PendingAction> actions = PendingStore::listExisting(ConfigDir::url());
    const bool one = !arguments.words.empty();
    if (one) {
        const std::string& id = arguments.words.front();
        std::erase_if(actions, [&](const PendingAction& action) { return action.id != id; });
        if (actions.empty())
            throw ServiceError(fmt::format("no action \"{}\" is waiting; \"mervo pending\" lists what is", id));
    }
    if (arguments.has(kJson))
        io.out(json(actions));
    else
        io.out(one ? page(actions.front()) : list(actions));
    return ExitCode::done;
}

} // namespace

constinit const Command kPending{
    "pending", "[<id>] [--json]", "list what waits for the owner, oldest first", kHelp, kOptions, 1, run};

} // namespace mervo::cli
