#include "core/foundation/ConfigDir.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"
#include "platform/unicode.h"
#include "tools/cli/Commands.h"
#include "tools/cli/Json.h"

#include <array>
#include <fmt/format.h>

namespace mervo::cli {

namespace {

constexpr std::array kOptions{kJson};
constexpr std::size_t kLineLimit = 120; ///< characters of a call in the list

constexpr std::string_view kHelp =
    R"(Lists the actions that wait for the owner, oldest first: id, time, and the call. With an id: that action whole, with every
argument. --json prints an array of the stored objects. It only reads: an action is approved or rejected by a person, in
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

std::string page(const PendingAction& action)
{
    std::string text = fmt::format("{}  {}  {}\n", Text::visibleLine(action.id), Text::visibleLine(action.createdAt),
        Text::visibleLine(action.tool));
    if (action.preview)
        text += fmt::format("{}\n", Text::visibleLine(*action.preview));
    for (const auto& [key, value] : action.args)
        text += fmt::format("  {}={}\n", Text::visibleLine(key), Text::visibleLine(value));
    return text;
}

std::string json(const std::vector<PendingAction>& actions)
{
    std::vector<std::string> objects;
    for (const PendingAction& action : actions)
        objects.push_back(action.encode());
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
