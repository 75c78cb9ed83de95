#include "core/automations/tools/AutomationText.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/automations/model/AutomationDraft.h"
#include "core/foundation/Text.h"
#include "core/tools/LocalTime.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>

namespace mervo::AutomationText {

namespace {

constexpr std::size_t kShown = 80; ///< characters of what an automation does
constexpr std::uintmax_t kLongestTail = 4 * 1024 * 1024; ///< bytes

std::string onOneLine(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    return text;
}

std::string what(const Automation& automation)
{
    std::string text = automation.command ? *automation.command : automation.prompt.value_or("");
    if (automation.kind == Automation::Kind::tool) {
        const ToolCall call = ToolCall::ofCommand(text);
        text = call.args.empty() ? call.tool : call.tool + " " + call.args;
    } else if (automation.kind == Automation::Kind::agent) {
        text = automation.prompt.value_or("");
    }
    return std::string(Text::firstCharacters(onOneLine(std::move(text)), kShown));
}

std::string last(const Automation& automation)
{
    if (automation.running)
        return "running";
    if (!automation.lastExit)
        return "never ran";
    std::string text = *automation.lastExit == 0 ? "ok" : fmt::format("FAILED(exit {})", *automation.lastExit);
    if (automation.lastRun) {
        const auto moment = std::chrono::floor<std::chrono::seconds>(*automation.lastRun).time_since_epoch().count();
        text += " @ " + LocalTime::minute(moment);
    }
    return text;
}

std::string line(const Automation& automation)
{
    const bool isAgent = automation.kind == Automation::Kind::agent;
    const std::string_view kind = !isAgent ? rawValue(automation.kind)
        : automation.visible               ? "agent/window"
                                           : "agent/bg";
    return fmt::format("{} {} [{}{}] {}  {}  - {}", automation.enabled ? " " : "✗", onOneLine(automation.name), kind,
        automation.isSystem ? " [sys]" : "", scheduleLabel(automation.schedule), last(automation), what(automation));
}

/// The last bytes of a regular file; nothing when it cannot be read.
std::optional<std::string> tail(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return std::nullopt;
    const auto size = std::filesystem::file_size(file, error);
    std::ifstream stream(file, std::ios::binary);
    const auto length = std::min(size, kLongestTail);
    std::string bytes(error ? 0 : length, '\0');
    stream.seekg(static_cast<std::streamoff>(size - length));
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (error || stream.bad() || !stream.is_open())
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

} // namespace

std::string list(std::span<const Automation> automations)
{
    if (automations.empty())
        return "(no automations - auto.add to create one)";
    std::vector<std::string> lines;
    for (const Automation& automation : automations)
        lines.push_back(line(automation));
    return Text::join(lines, "\n");
}

std::string preview(const Automation& automation)
{
    return fmt::format(
        "{} automation, {} - {}", rawValue(automation.kind), scheduleLabel(automation.schedule), what(automation));
}

std::string logTail(const std::string& name, std::int64_t lines)
{
    const auto log = tail(RondelEngine::logURL(name));
    if (!log)
        return fmt::format("(no log yet for '{}')", name);
    auto all = Text::split(*log, '\n');
    if (all.back().empty())
        all.pop_back();
    const auto wanted = std::clamp<std::int64_t>(lines, 0, static_cast<std::int64_t>(all.size()));
    all.erase(all.begin(), all.end() - wanted);
    return Text::join(all, "\n");
}

} // namespace mervo::AutomationText
