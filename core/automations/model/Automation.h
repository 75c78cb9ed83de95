#pragma once

#include "core/foundation/Timestamps.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace mervo {

/// A named, scheduled unit of work, as its folder and its runtime files describe it. A plain value; every listing makes
/// new ones. Identified by `name`.
struct Automation {
    enum class Kind { agent, script, tool };
    enum class RunOutcome { ok, stopped, failed };

    static constexpr std::int64_t kUsualMinutes = 360; ///< between runs, by default

    struct Interval {
        std::int64_t minutes;
        bool operator==(const Interval&) const = default;
    };
    struct Calendar { ///< once a day, local time
        std::int64_t hour, minute;
        bool operator==(const Calendar&) const = default;
    };
    struct Hours { ///< every day at each of these hours, in the order written
        std::vector<std::int64_t> hours;
        std::int64_t minute;
        bool operator==(const Hours&) const = default;
    };
    using Schedule = std::variant<Interval, Calendar, Hours>;

    std::string name = {}; ///< also the folder's
    Kind kind = Kind::agent;
    std::optional<std::string> prompt = {}; ///< the agent's instructions
    std::optional<std::string> command = {}; ///< of a script or tool
    std::optional<std::string> model = {};
    std::string client = "claude"; ///< as written, also when no such client is known
    std::optional<std::string> effort = {};
    std::optional<std::string> cwd = {};
    Schedule schedule = Interval{kUsualMinutes};
    bool visible = true; ///< in a terminal window
    std::optional<std::int64_t> screen = {};
    bool notifyOnFail = false;
    bool enabled = true;
    bool isSystem = false;
    bool running = false;
    std::optional<Timestamps::Time> lastRun = {};
    std::optional<std::int64_t> lastExit = {};

    bool operator==(const Automation&) const = default;

    /// How the last run ended; nothing when there was none. A stopped agent exits with 137 or 143.
    std::optional<RunOutcome> lastOutcome() const noexcept;
    /// The prompt of an agent; empty for other kinds.
    std::string_view agentPrompt() const noexcept;
};

std::string_view rawValue(Automation::Kind kind) noexcept;

/// "every 5m", "every 2h", "daily", "every 3d", "daily 8:05", "at 8,12,16h".
std::string scheduleLabel(const Automation::Schedule& schedule);

/// The first line of a prompt with any words in it, without Markdown emphasis, cut to fit a list.
std::string promptPreview(std::string_view prompt);

} // namespace mervo
