#pragma once

#include "core/automations/engine/Programs.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// tmux with the one server of all live sessions, whose socket is in the home directory. Sessions are named by
/// AutomationName::sessionName and addressed exactly ("=name"), since tmux takes the beginning of a name for it too.
class Tmux {
public:
    explicit Tmux(const std::filesystem::path& home, RunProgram run = platform::run);

    /// The first that can be run of /opt/homebrew/bin, /usr/local/bin and /usr/bin; empty without one.
    static std::filesystem::path program();

    /// How a session is addressed: "=" and its name.
    static std::string target(std::string_view automation);

    /// `-S <socket>` and these arguments, with what tmux writes discarded. The exit status; -1 without tmux, or when it
    /// could not be started or was killed.
    int run(std::vector<std::string> arguments) const;

    bool hasSession(std::string_view automation) const;
    /// Whether tmux says that there is none: not when it could not be asked.
    bool isWithoutSession(std::string_view automation) const;
    /// The processes that its panes run, each the leader of a session of the system.
    std::vector<std::int64_t> paneProcesses(std::string_view automation) const;
    /// Ends the session and hangs up what runs in it; false when there was none.
    bool killSession(std::string_view automation) const;

private:
    std::optional<platform::Outcome> outcome(std::vector<std::string> arguments) const;

    std::filesystem::path socket_;
    RunProgram run_;
};

} // namespace mervo
