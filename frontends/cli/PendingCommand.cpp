#include "core/catalogue/Catalogue.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Json.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"
#include "core/policy/Remarks.h"
#include "frontends/cli/Commands.h"
#include "frontends/cli/Json.h"
#include "platform/unicode.h"

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
where there are any, and {"damaged","reason"} for a file that cannot be read. It only reads: an action is approved or
rejected by a person, in the cockpit.

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

/// What cannot be read, on one line; empty when everything can.
std::string unread(const PendingStore::Listing& found)
{
    if (found.failure) {
        return fmt::format(
            "The queue cannot be read ({}); \"mervo doctor\" says what to do.\n", found.failure.message());
    }
    if (found.damaged.empty())
        return {};
    std::vector<std::string> files;
    for (const PendingStore::Damaged& file : found.damaged)
        files.push_back(Text::visibleLine(fmt::format("{} ({})", file.name, file.reason)));
    return fmt::format("{} cannot be read: {}; \"mervo doctor\" says what to do.\n",
        files.size() == 1 ? "1 file" : fmt::format("{} files", files.size()), Text::join(files, ", "));
}

std::string list(const PendingStore::Listing& found)
{
    std::string text;
    for (const PendingAction& action : found.actions) {
        text += fmt::format(
            "{}  {}  {}\n", Text::visibleLine(action.id), Text::visibleLine(action.createdAt), action.line(kLineLimit));
        if (action.preview)
            text += fmt::format("          {}\n", shortened(*action.preview));
    }
    text += unread(found);
    return text.empty() ? "Nothing is waiting.\n" : text;
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
        for (const Remark& remark : remarks) {
            if (remark.argument == key)
                text += fmt::format("      {}{}\n", remark.noEffect ? "no effect: " : "", remark.sentence);
        }
    }
    return text;
}

/// The stored object, and the remarks on its arguments where there are any.
std::string object(const PendingAction& action)
{
    auto object = nlohmann::ordered_json::parse(action.encode());
    for (const Remark& remark : remarksOn(action)) {
        object["remarks"].push_back(
            {{"argument", remark.argument}, {"sentence", remark.sentence}, {"noEffect", remark.noEffect}});
    }
    return object.dump();
}

std::string quoted(const std::string& text)
{
    return compactJson(nlohmann::json(text));
}

/// The objects, and one {"damaged":<file>,"reason":...} for each file that cannot be read.
std::string json(const PendingStore::Listing& found)
{
    std::vector<std::string> objects;
    for (const PendingAction& action : found.actions)
        objects.push_back(object(action));
    for (const auto& [name, reason] : found.damaged)
        objects.push_back(fmt::format(R"({{"damaged":{},"reason":{}}})", quoted(name), quoted(reason)));
    return withEscapes(fmt::format("[{}]", Text::join(objects, ","))) + "\n";
}

/// The one action, or why there is none.
PendingAction named(const PendingStore::Listing& found, const std::string& id)
{
    for (const PendingAction& action : found.actions) {
        if (action.id == id)
            return action;
    }
    for (const auto& [name, reason] : found.damaged) {
        if (name == id + ".json") {
            throw ServiceError(fmt::format(
                "the file of action \"{}\" cannot be read: {}; \"mervo doctor\" says what to do", id, reason));
        }
    }
    throw ServiceError(fmt::format("no action \"{}\" is waiting; \"mervo pending\" lists what is", id));
}

ExitCode run(const Arguments& arguments, Io& io)
{
    PendingStore::Listing found = PendingStore::listing(ConfigDir::url());
    const bool one = !arguments.words.empty();
    if (one) {
        found = {{named(found, arguments.words.front())}, {}, {}};
    } else if (found.failure && arguments.has(kJson)) {
        throw ServiceError(fmt::format("the queue cannot be read: {}", found.failure.message()));
    }
    if (arguments.has(kJson)) {
        io.out(json(found));
    } else {
        io.out(one ? page(found.actions.front()) : list(found));
    }
    return ExitCode::done;
}

} // namespace

constinit const Command kPending{
    "pending", "[<id>] [--json]", "list what waits for the owner, oldest first", kHelp, kOptions, 1, run};

} // namespace mervo::cli
