#include "frontends/cli/CommandLine.h"

#include "core/foundation/Nearest.h"
#include "core/foundation/Text.h"
#include "frontends/cli/Commands.h"
#include "frontends/cli/Help.h"

#include <algorithm>
#include <array>
#include <exception>
#include <fmt/format.h>
#include <utility>

namespace mervo::cli {

namespace {

void complain(Io& io, std::string_view sentence)
{
    io.err(fmt::format("error: {}\n", Text::visibleLine(sentence)));
}

// What people look for here and will not find: no command does it, because whatever an agent can start must not.
constexpr std::string_view kWhatWaits = "\"mervo pending\" lists what waits";
constexpr std::string_view kRules = "\"mervo explain\" says which rules bear on a call";
constexpr std::string_view kTrail = "agents do not read the trail";
constexpr std::array<std::pair<std::string_view, std::string_view>, 10> kForThePerson{
    {{"approve", kWhatWaits}, {"reject", kWhatWaits}, {"deny", kWhatWaits}, {"allow", kRules}, {"rule", kRules},
        {"rules", kRules}, {"policy", kRules}, {"audit", kTrail}, {"trail", kTrail}, {"history", kTrail}}};

const Command& find(const std::string& name)
{
    const auto found = std::ranges::find(kCommands, std::string_view(name), &Command::name);
    if (found != kCommands.end())
        return **found;
    if (const auto person = std::ranges::find(kForThePerson, name, [](const auto& entry) { return entry.first; });
        person != kForThePerson.end()) {
        throw UsageError(
            fmt::format("\"{}\" is for a person, in the cockpit (mervo-cockpit); {}", name, person->second));
    }
    std::vector<std::string_view> names;
    for (const Command* command : kCommands)
        names.push_back(command->name);
    throw UsageError(fmt::format("there is no command \"{}\"{}", name, didYouMean(nearest(name, names))));
}

/// A request for help counts anywhere before "--", also beside words that would otherwise be refused.
bool asksForHelp(std::span<const std::string> words)
{
    const auto end = std::ranges::find(words, "--");
    return std::any_of(words.begin(), end, [](const auto& word) { return word == "--help" || word == "-h"; });
}

ExitCode help(std::span<const std::string> words, Io& io)
{
    io.out(words.empty() ? helpOfAll() : helpOf(find(words.front()), io.width));
    return ExitCode::done;
}

ExitCode runCommand(const Command& command, std::span<const std::string> words, Io& io)
{
    try {
        return command.run(parse(command, words), io);
    } catch (const UsageError& error) {
        complain(io, error.what());
        io.err(usageLine(command));
        return ExitCode::usage;
    }
}

ExitCode dispatch(std::span<const std::string> words, Io& io)
{
    if (words.empty())
        throw UsageError("no command was named");
    const std::string& first = words.front();
    const auto rest = words.subspan(1);
    if (first == "--help" || first == "-h" || first == "help")
        return help(rest, io);
    if (first == "--version") {
        io.out("mervo " MERVO_VERSION "\n");
        return ExitCode::done;
    }
    const Command& command = find(first);
    if (asksForHelp(rest))
        return help(words.first(1), io);
    return runCommand(command, rest, io);
}

} // namespace

ExitCode runCommandLine(std::span<const std::string> words, Io& io) noexcept
try {
    try {
        return dispatch(words, io);
    } catch (const OutputFailed& error) {
        if (!error.readerIsGone())
            complain(io, error.what());
        return ExitCode::failed;
    } catch (const UsageError& error) {
        complain(io, error.what());
        io.err("\"mervo help\" lists the commands\n");
        return ExitCode::usage;
    } catch (const std::exception& error) {
        complain(io, error.what());
        return ExitCode::failed;
    }
} catch (...) {
    return ExitCode::failed; // not even the complaint could be written
}

} // namespace mervo::cli
