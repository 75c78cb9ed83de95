#include "core/automations/model/Automation.h"

#include "core/foundation/Text.h"

#include <fmt/format.h>

namespace mervo {

namespace {

constexpr std::int64_t kHour = 60, kDay = 24 * kHour; // minutes
constexpr std::int64_t kKilled = 137, kTerminated = 143; // exit codes: 128 and the signal
constexpr std::size_t kPreviewLength = 120;

std::string label(const Automation::Interval& every)
{
    if (every.minutes >= kDay && every.minutes < 2 * kDay && every.minutes % kDay == 0)
        return "daily";
    if (every.minutes % kDay == 0)
        return fmt::format("every {}d", every.minutes / kDay);
    if (every.minutes % kHour == 0)
        return fmt::format("every {}h", every.minutes / kHour);
    return fmt::format("every {}m", every.minutes);
}

std::string label(const Automation::Calendar& at)
{
    return fmt::format("daily {}:{:02}", at.hour, at.minute);
}

std::string label(const Automation::Hours& at)
{
    return fmt::format("at {}h", fmt::join(at.hours, ","));
}

std::string without(std::string text, std::string_view mark)
{
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at))
        text.erase(at, mark.size());
    return text;
}

} // namespace

std::optional<Automation::RunOutcome> Automation::lastOutcome() const noexcept
{
    if (!lastExit)
        return std::nullopt;
    if (*lastExit == 0)
        return RunOutcome::ok;
    const bool wasStopped = kind == Kind::agent && (*lastExit == kKilled || *lastExit == kTerminated);
    return wasStopped ? RunOutcome::stopped : RunOutcome::failed;
}

std::string_view Automation::agentPrompt() const noexcept
{
    return kind == Kind::agent && prompt ? std::string_view(*prompt) : std::string_view();
}

std::string_view rawValue(Automation::Kind kind) noexcept
{
    switch (kind) {
    case Automation::Kind::agent:
        return "agent";
    case Automation::Kind::script:
        return "script";
    case Automation::Kind::tool:
        break;
    }
    return "tool";
}

std::string scheduleLabel(const Automation::Schedule& schedule)
{
    return std::visit([](const auto& when) { return label(when); }, schedule);
}

std::string promptPreview(std::string_view prompt)
{
    for (const std::string& whole : Text::split(prompt, '\n')) {
        const std::string_view line = Text::trimmed(whole);
        if (!line.empty() && !line.starts_with('#') && !line.starts_with('>'))
            return Text::cut(without(without(std::string(line), "**"), "`"), kPreviewLength);
    }
    return {};
}

} // namespace mervo
