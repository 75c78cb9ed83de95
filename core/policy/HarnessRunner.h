#pragma once

#include "core/policy/ActionPolicy.h"
#include "core/policy/AuditLog.h"
#include "core/policy/Notices.h"
#include "core/policy/RuleStore.h"
#include "core/policy/Tool.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// The only path by which a call reaches the owner's applications.
///
/// A call is validated, judged, and then does exactly one of four things: it is refused, it waits in the queue, it
/// runs, or it reports why it could not be queued. Everything that touches the world leaves one audit row. Nothing is
/// kept between calls that another process could change: configuration, rules and the day's count are those of the
/// moment. Calls block their thread for as long as the tool runs, take no lock, and may be made from many threads and
/// processes at once.
namespace mervo::HarnessRunner {

struct Executed {
    std::string output; ///< after the tool's transform
};
struct Pending {
    std::string id;
    std::optional<std::string> preview;
};
struct Error {
    std::string text; ///< for the agent
};
using Result = std::variant<Executed, Pending, Error>;

/// The stores that a call reads and writes.
struct Stores {
    RuleStore& rules;
    AuditLog& audit;
    static Stores shared() noexcept;
};

/// `actor` is recorded as it stands; the queue lies under `configDir`. With `notices`, adds there what the caller
/// should be told besides the result. Never throws.
[[nodiscard]] Result run(const Tool& tool, const Args& args, std::string_view actor,
    const std::filesystem::path& configDir, Stores stores = Stores::shared(), Notices* notices = nullptr);

/// The result of running a tool: `error` is empty when `ok`, `output` when not.
struct Execution {
    bool ok = false;
    std::string output = {};
    std::string error = {};
};

/// The only place that runs a tool; no policy, no audit, no queue. Never throws.
[[nodiscard]] Execution executeBuilt(const Tool& tool, const Args& args);

/// A text for an audit row: trimmed, and cut to `limit` characters with "..." behind.
std::string truncate(std::string_view text, std::size_t limit);
inline constexpr std::size_t kAuditTextLimit = 500;

/// What a call with these arguments would meet, found on the same path as `run`; reads only, and creates nothing.
struct Explanation {
    std::optional<std::string> refusal; ///< what `build` says against the arguments
    AutonomyMode mode = AutonomyMode::copilote;
    std::int64_t mutationsToday = 0;
    std::int64_t dailyCap = 0;
    ActionPolicy::Outcome outcome;
    std::vector<PolicyRule> rules; ///< in store order; the trace points into this list
    ActionPolicy::Trace trace;
    std::vector<Remark> remarks; ///< on the arguments
    std::optional<std::string> preview; ///< of a tool that has one, unless the call would be denied
    std::string rulesUnread; ///< a sentence when the rules could not be read, and `rules` is empty for that reason
    std::string countUnread; ///< the same of the day's count
};
[[nodiscard]] Explanation explain(const Tool& tool, const Args& args);

} // namespace mervo::HarnessRunner
