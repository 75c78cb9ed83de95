#include "core/automations/engine/LiveView.h"

#include "core/automations/engine/EngineError.h"
#include "core/automations/engine/Tmux.h"
#include "core/foundation/Text.h"
#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/programs.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::LiveView {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCloseTerminal = R"(tell application "Terminal"
  repeat with w in windows
    try
      if tty of (selected tab of w) is t then close w saving no
    end try
  end repeat
end tell)";

constexpr std::string_view kCloseITerm = R"(tell application "iTerm2"
  repeat with w in windows
    repeat with tb in tabs of w
      repeat with s in sessions of tb
        try
          if tty of s is t then close w
        end try
      end repeat
    end repeat
  end repeat
end tell)";

/// Waits in the background for a second, so that the terminal's own shell can end first. A branch of a shell is never
/// empty.
std::string closing(std::string_view terminal)
{
    const std::string_view body = terminal == "terminal" ? kCloseTerminal : terminal == "iterm" ? kCloseITerm : "";
    if (body.empty())
        return "  :\n";
    return fmt::format("  ( sleep 1; {} - \"$TTY\" >/dev/null 2>&1 <<'OSA'\n"
                       "on run argv\n  set t to item 1 of argv\n  {}\nend run\nOSA\n  ) &\n",
        Text::shellQuoted(platform::osascript().string()), body);
}

/// A new file, as other users may put one of this name into the folder that all of them share.
void write(const fs::path& file, const std::string& text)
{
    std::error_code error;
    fs::remove(file, error);
    error = platform::createFile(file, text);
    if (!error)
        fs::permissions(file, fs::perms(0755), error);
    if (error)
        throw EngineError::failed(fmt::format("\"{}\" could not be written: {}", file.string(), error.message()));
}

} // namespace

std::string script(const fs::path& socket, std::string_view automation, std::string_view terminal)
{
    return fmt::format("#!/bin/bash\nexport PATH=\"/opt/homebrew/bin:/usr/local/bin:$PATH\"\nTTY=\"$(tty)\"\n"
                       "if tmux -S {} attach -t {}; then\n{}fi\n",
        Text::shellQuoted(socket.string()), Text::shellQuoted(Tmux::target(automation)), closing(terminal));
}

std::string shortName(const std::string& terminal)
{
    std::string name = fs::path(terminal).stem().string();
    std::ranges::transform(name, name.begin(), platform::ascii::lower);
    return name;
}

void open(const fs::path& socket, std::string_view automation, const std::string& terminal, const RunProgram& run)
{
    std::error_code none;
    const fs::path file = fs::temp_directory_path(none) / fmt::format("mervo-attach-{}.command", automation);
    if (none)
        throw EngineError::failed("there is no folder for temporary files: " + none.message());
    write(file, script(socket, automation, shortName(terminal)));
    std::string reason;
    try {
        const auto outcome =
            run({.program = platform::platformProgram("open").string(), .arguments = {"-a", terminal, file.string()}});
        if (outcome.status == 0)
            return;
        reason = Text::trimmed(outcome.error);
    } catch (const platform::NotStarted& failure) {
        reason = failure.what();
    }
    throw EngineError::failed(reason.empty() ? fmt::format("\"{}\" could not be opened", terminal) : reason);
}

} // namespace mervo::LiveView
