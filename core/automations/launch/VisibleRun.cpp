#include "core/automations/launch/VisibleRun.h"

#include "core/automations/launch/DoneSignal.h"
#include "core/automations/launch/RondelScreens.h"
#include "core/automations/launch/RunEnvironment.h"
#include "core/automations/launch/WrapperScript.h"
#include "core/foundation/Text.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>

namespace mervo::VisibleRun {

namespace {

constexpr std::size_t kLongestId = 4096; // bytes

constexpr std::string_view kOpen = R"(tell application "iTerm2"
  activate
  set newWindow to (create window with default profile)
  {}
  tell current session of newWindow
    write text "exec bash {}"
  end tell
  return id of current session of newWindow
end tell)";

constexpr std::string_view kClose = R"(tell application "iTerm2"
  repeat with w in windows
    repeat with t in tabs of w
      repeat with s in sessions of t
        if (id of s) is "{}" then
          close t
        end if
      end repeat
    end repeat
  end repeat
end tell)";

constexpr std::string_view kLook = R"(tell application "iTerm2"
  repeat with w in windows
    repeat with t in tabs of w
      repeat with s in sessions of t
        if (id of s) is "{}" then return "there"
      end repeat
    end repeat
  end repeat
  return "gone"
end tell)";

struct Answer {
    std::string text; ///< trimmed
    std::string error; ///< why there is none
};

Answer runScript(const std::string& script)
{
    try {
        const auto outcome = platform::run(
            {.program = platform::osascript().string(), .input = script, .environment = RunEnvironment::ofHelpers()});
        return {std::string(Text::trimmed(outcome.output)), std::string(Text::trimmed(outcome.error))};
    } catch (const platform::NotStarted& failure) {
        return {{}, failure.what()};
    }
}

/// Within a script's text.
std::string literal(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '"' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string place(const AgentRun& run)
{
    if (!run.screen || *run.screen < 0 || *run.screen > std::numeric_limits<int>::max())
        return {};
    const auto bounds = RondelScreens::bounds(static_cast<int>(*run.screen));
    return bounds ? "set bounds of newWindow to " + *bounds : std::string();
}

/// The id of the session in the new window; empty when none opens.
std::string open(const AgentRun& run, const RunLog& log)
{
    WrapperScript::write(run); // without it the session ends at once
    Answer answer = runScript(fmt::format(kOpen, place(run), literal(run.paths.wrapper().string())));
    std::erase(answer.text, '\n');
    log.stamped("launched iTerm2 session " + answer.text);
    if (answer.text.empty())
        log.stamped(
            "no window opens, waiting for a done signal until the deadline: " + Text::visibleLine(answer.error));
    // For the run after, should this process be killed.
    platform::replaceFile(run.paths.window(), answer.text, platform::Keep::whileRunning);
    return answer.text;
}

void close(const std::string& session, const RunPaths& paths)
{
    if (!session.empty())
        runScript(fmt::format(kClose, literal(session)));
    std::error_code ignored;
    std::filesystem::remove(paths.window(), ignored);
}

} // namespace

void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record)
{
    const std::string session = open(run, log);
    if (!session.empty())
        run.started();
    const std::string look = fmt::format(kLook, literal(session));
    const auto isGone = [&] { return !session.empty() && runScript(look).text == "gone"; };
    const int code = DoneSignal::wait({run.paths.done(), run.timeout, isGone}, request, log);
    record(code);
    close(session, run.paths);
    log.stamped("run finished");
}

void endLeftover(const RunPaths& paths, const RunLog& log)
{
    const auto session = platform::readFile(paths.window(), kLongestId);
    if (!session)
        return;
    close(*session, paths);
    log.stamped("closed the window that the run before had left");
}

} // namespace mervo::VisibleRun
