#include "core/catalogue/Catalogue.h"
#include "frontends/cli/Call.h"
#include "frontends/cli/Commands.h"
#include "frontends/cli/Json.h"
#include "frontends/cli/Wrap.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

constexpr Option kIds{"--ids", "print the ids alone, one on a line"};
constexpr Option kArguments{"--arguments", "print the names of one tool's arguments alone, one on a line"};
constexpr std::array kOptions{kJson, kIds, kArguments};

constexpr std::string_view kHelp =
    R"(Lists every tool, family by family: its id, its effect (read, create or destructive) and its summary, in lines as wide as
the terminal. With a tool's id: that tool alone, with its arguments. --json prints an array of objects with id, effect,
summary and arguments, in the order of the catalogue, also for one tool. --ids and --arguments are for scripts and for the
completion of shells.

Examples:
  mervo tools
  mervo tools mail.search
  mervo tools --json
)";

nlohmann::ordered_json record(const Tool& tool)
{
    nlohmann::ordered_json arguments = nlohmann::ordered_json::array();
    for (const Argument& argument : tool.arguments) {
        arguments.push_back({{"name", argument.name}, {"required", argument.required}, {"help", argument.help}});
        if (const std::string format = argument.format.inWords(); !format.empty())
            arguments.back()["format"] = format;
    }
    return {{"id", tool.id}, {"effect", rawValue(tool.effect)}, {"summary", tool.summary}, {"arguments", arguments}};
}

std::string_view family(std::string_view id)
{
    return id.substr(0, id.find('.'));
}

/// The families in the order of their first tools, with an empty line between them.
std::string list(std::span<const Tool* const> tools, std::size_t width)
{
    std::vector<std::pair<std::string_view, std::string>> families;
    for (const Tool* tool : tools) {
        const auto name = family(tool->id);
        auto found = std::ranges::find(families, name, &std::pair<std::string_view, std::string>::first);
        if (found == families.end())
            found = families.insert(families.end(), {name, {}});
        found->second += wrapped(fmt::format("{} ({}): {}", tool->id, rawValue(tool->effect), tool->summary), width, 4);
    }
    std::string text;
    for (const auto& [name, lines] : families)
        text += (text.empty() ? "" : "\n") + lines;
    return text;
}

/// The help, and the format where the help does not say it.
std::string described(const Argument& argument)
{
    const std::string format = argument.format.inWords();
    const bool isSaid = argument.help.find(format) != std::string_view::npos;
    return isSaid ? std::string(argument.help) : fmt::format("{}; {}", argument.help, format);
}

std::string page(const Tool& tool, std::size_t lineWidth)
{
    std::string text = fmt::format("{} ({})\n{}", tool.id, rawValue(tool.effect), wrapped(tool.summary, lineWidth, 0));
    if (tool.arguments.empty())
        return text + "\nIt takes no arguments.\n";
    std::size_t width = 0;
    for (const Argument& argument : tool.arguments)
        width = std::max(width, argument.name.size());
    text += "\nArguments:\n";
    for (const Argument& argument : tool.arguments) {
        const auto* const need = argument.required ? "required" : "optional";
        const std::string line = fmt::format("  {:<{}}  {}  {}", argument.name, width, need, described(argument));
        text += wrapped(line, lineWidth, width + 14);
    }
    return text;
}

std::string argumentNames(const Tool& tool)
{
    std::string text;
    for (const Argument& argument : tool.arguments)
        text += fmt::format("{}\n", argument.name);
    return text;
}

ExitCode showOne(const Tool& tool, const Arguments& arguments, Io& io)
{
    if (arguments.has(kArguments)) {
        io.out(argumentNames(tool));
    } else if (arguments.has(kIds)) {
        io.out(tool.id + "\n");
    } else if (arguments.has(kJson)) {
        io.out(jsonLine(nlohmann::ordered_json::array({record(tool)})));
    } else {
        io.out(page(tool, io.width));
    }
    return ExitCode::done;
}

ExitCode showAll(const Arguments& arguments, Io& io)
{
    if (arguments.has(kArguments))
        throw UsageError("--arguments needs a tool");
    const auto tools = Tools::all();
    if (arguments.has(kIds)) {
        std::string ids;
        for (const Tool* tool : tools)
            ids += tool->id + "\n";
        io.out(ids);
    } else if (arguments.has(kJson)) {
        nlohmann::ordered_json records = nlohmann::ordered_json::array();
        for (const Tool* tool : tools)
            records.push_back(record(*tool));
        io.out(jsonLine(records));
    } else {
        io.out(list(tools, io.width));
    }
    return ExitCode::done;
}

ExitCode run(const Arguments& arguments, Io& io)
{
    if (arguments.options.size() > 1)
        throw UsageError("only one of --json, --ids and --arguments can be given");
    if (arguments.words.empty())
        return showAll(arguments, io);
    return showOne(findTool(arguments.words.front()), arguments, io);
}

} // namespace

constinit const Command kTools{
    "tools", "[<tool>] [--json | --ids | --arguments]", "list the tools: id, effect, summary", kHelp, kOptions, 1, run};

} // namespace mervo::cli
