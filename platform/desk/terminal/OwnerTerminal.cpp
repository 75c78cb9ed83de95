#include "platform/desk/terminal/OwnerTerminal.h"

#include "platform/desk/settings/Places.h"
#include "platform/desk/terminal/TerminalError.h"
#include "platform/desk/terminal/TerminalSettings.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/programs.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <sstream>
#include <string_view>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDebianName = "x-terminal-emulator"; // Debian Policy 11.8.3: takes -e

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool suits(KnownTerminal::Display display)
{
    return display == KnownTerminal::Display::any
        || isSet(display == KnownTerminal::Display::x11 ? "DISPLAY" : "WAYLAND_DISPLAY");
}

/// By its name, or by that of the program that it is a link to.
KnownTerminal kindOf(const fs::path& program, std::string_view otherwise)
{
    std::error_code error;
    for (const fs::path& path : {program, fs::canonical(program, error)}) {
        if (const KnownTerminal* known = knownTerminal(path.filename().string()))
            return *known;
    }
    return {.program = "", .introduction = otherwise};
}

std::optional<OwnerTerminal> find(
    const std::vector<std::string>& command, std::string_view introduction, std::string source)
{
    const fs::path program = command.empty() ? fs::path() : platform::findProgram(command.front());
    if (program.empty())
        return std::nullopt;
    return OwnerTerminal{.program = program,
        .words = {command.begin() + 1, command.end()},
        .kind = kindOf(program, introduction),
        .source = std::move(source)};
}

std::vector<std::string> split(const std::string& words)
{
    std::vector<std::string> found;
    std::istringstream stream(words);
    for (std::string word; stream >> word;)
        found.push_back(word);
    return found;
}

/// A program's path, or one with options behind it, as some have it in $TERMINAL.
std::optional<OwnerTerminal> fromEnvironment()
{
    if (!isSet("TERMINAL"))
        return std::nullopt;
    const std::string named = std::getenv("TERMINAL");
    auto found = find({named}, "-e", "$TERMINAL");
    return found ? found : find(split(named), "-e", "$TERMINAL");
}

std::optional<OwnerTerminal> firstKnown()
{
    for (const KnownTerminal& known : knownTerminals()) {
        if (!suits(known.display))
            continue;
        if (auto found = find({std::string(known.program)}, "-e", ""))
            return found;
    }
    return std::nullopt;
}

/// The value of "Exec" in the group [Desktop Entry]; empty when there is none.
std::string execLine(const std::string& entry)
{
    std::istringstream lines(entry);
    bool isInGroup = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('['))
            isInGroup = line.starts_with("[Desktop Entry]");
        const std::size_t equals = line.find('=');
        if (isInGroup && equals != std::string::npos
            && split(line.substr(0, equals)) == std::vector<std::string>{"Exec"})
            return line.substr(equals + 1);
    }
    return {};
}

/// The words of a command line of a desktop entry: quoted ones keep their blanks, field codes ("%u") are left out.
std::vector<std::string> execWords(std::string_view line)
{
    std::vector<std::string> words;
    std::string word;
    bool isQuoted = false, isWord = false;
    for (std::size_t at = 0; at <= line.size(); ++at) {
        const char c = at < line.size() ? line[at] : ' ';
        if (!isQuoted && (c == ' ' || c == '\t' || c == '\r')) {
            if (isWord)
                words.push_back(word);
            word.clear();
            isWord = false;
            continue;
        }
        const bool isPercent = c == '%' && at + 1 < line.size();
        if (isPercent && line[++at] != '%')
            continue; // a field code
        isWord = true;
        if (isPercent) {
            word += c;
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == '\\' && isQuoted && at + 1 < line.size()) {
            word += line[++at];
        } else {
            word += c;
        }
    }
    return words;
}

} // namespace

OwnerTerminal ownerTerminal(const Configuration& configuration)
{
    const std::vector<std::string> named = terminalCommand(configuration);
    if (!named.empty()) {
        if (auto found = find(named, "", "desk.toml"))
            return *found;
        throw TerminalError(fmt::format("The terminal {} is not found; install it, or correct \"command\" of "
                                        "[terminal] in {}.",
            named.front(), configurationFile().string()));
    }
    for (const auto& look : {fromEnvironment, +[] { return find({kDebianName}, "-e", kDebianName); }, firstKnown}) {
        if (auto found = look())
            return *found;
    }
    throw TerminalError(fmt::format("No terminal is found; install one (package xterm, for instance), or name yours by "
                                    "\"command\" of [terminal] in {}.",
        configurationFile().string()));
}

OwnerTerminal terminalAt(const std::string& path)
{
    const bool isEntry = fs::path(path).extension() == ".desktop";
    std::error_code why;
    const auto entry = isEntry ? platform::readFile(platform::expandTilde(path), platform::kLongestFile, &why)
                               : std::optional<std::string>();
    if (isEntry && !entry)
        throw TerminalError(fmt::format("The desktop entry {} cannot be read: {}.", path, why.message()));
    const std::vector<std::string> command = isEntry ? execWords(execLine(*entry)) : std::vector<std::string>{path};
    if (auto found = find(command, "-e", path))
        return *found;
    throw TerminalError(isEntry ? fmt::format("The desktop entry {} names no program that is there.", path)
                                : fmt::format("{} is no program.", path));
}

void requireDisplay()
{
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY"))
        throw TerminalError("There is no display to open a terminal on: neither DISPLAY nor WAYLAND_DISPLAY is set.");
}

} // namespace mervo::desk
