#include "core/scripting/OSAScript.h"

#include "core/foundation/Text.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace mervo {

namespace {

/// What the host puts before the words that are meant for people, most telling first.
constexpr std::array<std::string_view, 3> kMarkers{"syntax error", "script error", "execution error"};

/// Chatter of the frameworks below the host.
constexpr std::array<std::string_view, 6> kNoise{"TISFileInterrogator", "Connection invalid", "Connection Invalid",
    "Keyboard Layouts", "hiservices-xpcservice", "message reply handler"};

/// A source on disk for as long as the script runs.
class TemporaryScript {
public:
    /// Throws std::system_error.
    explicit TemporaryScript(std::string_view source)
        : path_(std::filesystem::temp_directory_path() / ("mervo-" + Text::newUuid() + ".applescript"))
    {
        if (const auto error = platform::replaceFile(path_, source, platform::Keep::whileRunning))
            throw std::system_error(error);
    }
    TemporaryScript(const TemporaryScript&) = delete;
    TemporaryScript& operator=(const TemporaryScript&) = delete;
    ~TemporaryScript()
    {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

OSAScript::Result failure(std::string text)
{
    return {false, {}, std::move(text), -1};
}

OSAScript::Result result(const platform::Outcome& outcome)
{
    const std::string_view output = platform::isValidUtf8(outcome.output) ? outcome.output : std::string_view();
    return {outcome.status == 0, std::string(Text::trimmed(output)), OSAScript::cleanedError(outcome.error),
        outcome.status};
}

OSAScript::Result launch(const TemporaryScript& script, const std::vector<std::string>& argv)
{
    platform::Command command{platform::osascript().string(), {script.path()}, {}, false};
    command.arguments.insert(command.arguments.end(), argv.begin(), argv.end());
    try {
        return result(platform::run(command));
    } catch (const platform::NotStarted& error) {
        return failure(std::string("failed to launch osascript: ") + error.what());
    }
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
        const TemporaryScript file(script);
        return launch(file, argv);
    } catch (const std::system_error& error) {
        return failure("failed to write temp script: " + error.code().message());
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
