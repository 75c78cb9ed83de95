#include "core/scripting/OSAScript.h"

#include "core/foundation/Text.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>

namespace mervo {

namespace {

/// What the host puts before the words that are meant for people, most telling first.
constexpr std::array<std::string_view, 3> kMarkers{"syntax error", "script error", "execution error"};

/// Chatter of the frameworks below the host.
constexpr std::array<std::string_view, 6> kNoise{"TISFileInterrogator", "Connection invalid", "Connection Invalid",
    "Keyboard Layouts", "hiservices-xpcservice", "message reply handler"};

OSAScript::Result failure(std::string text)
{
    return {.error = std::move(text)};
}

/// Why the host gave nothing, in place of the line that it could not write.
std::string silence(const platform::Outcome& outcome)
{
    if (outcome.signal == 0)
        return "the script host ended with status " + std::to_string(outcome.status) + " and said nothing";
    return "the script host was ended by signal " + std::to_string(outcome.signal) + " ("
        + platform::signalName(outcome.signal) + ") while it ran; it may have acted";
}

OSAScript::Result result(const platform::Outcome& outcome)
{
    const bool ok = outcome.status == 0;
    const std::string_view output = platform::isValidUtf8(outcome.output) ? outcome.output : std::string_view();
    std::string error = OSAScript::cleanedError(outcome.error);
    if (!ok && error.empty())
        error = silence(outcome);
    return {ok, std::string(Text::trimmed(output)), std::move(error), outcome.status};
}

/// What the host's private form reads: no text of a call stands in the list of processes or in a file.
std::string call(std::string_view script, const std::vector<std::string>& argv)
{
    std::string bytes(script);
    for (const std::string& argument : argv)
        (bytes += '\0') += argument;
    return bytes += '\0';
}

std::string_view trimmedBlanks(std::string_view line)
{
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

bool isNoise(std::string_view line)
{
    return std::any_of(kNoise.begin(), kNoise.end(),
        [&](std::string_view phrase) { return line.find(phrase) != std::string_view::npos; });
}

std::vector<std::string> nonEmptyLines(std::string_view text)
{
    std::vector<std::string> lines = Text::split(text, '\n');
    std::erase(lines, std::string());
    return lines;
}

} // namespace

OSAScript::Result OSAScript::run(std::string_view script, const std::vector<std::string>& argv)
{
    if (std::any_of(argv.begin(), argv.end(), [](const auto& item) { return item.find('\0') != std::string::npos; }))
        return failure("an argument holds a NUL character, which a script cannot receive");
    try {
        return result(platform::run({platform::osascript().string(), {"--call"}, call(script, argv)}));
    } catch (const platform::NotStarted& error) {
        return failure(std::string("failed to launch osascript: ") + error.what());
    } catch (const std::exception& error) {
        return failure(std::string("the script could not be run: ") + error.what());
    }
}

std::string OSAScript::cleanedError(std::string_view standardError)
{
    const std::string text = platform::withValidUtf8(standardError);
    const std::vector<std::string> lines = nonEmptyLines(text);
    if (lines.empty())
        return {};
    for (const std::string_view marker : kMarkers) {
        for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
            if (const std::size_t at = line->find(marker); at != std::string::npos)
                return std::string(trimmedBlanks(std::string_view(*line).substr(at)));
        }
    }
    const auto telling = std::find_if_not(lines.rbegin(), lines.rend(), isNoise);
    return std::string(trimmedBlanks(telling == lines.rend() ? lines.back() : *telling));
}

} // namespace mervo
