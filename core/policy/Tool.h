#pragma once

#include "core/policy/Argument.h"
#include "core/policy/Effect.h"

#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mervo {

/// A call's arguments: always texts. Each tool parses what it needs.
using Args = std::map<std::string, std::string, std::less<>>;

/// A constant script text and what it gets as positional arguments. No argument ever enters the source.
struct Invocation {
    std::string script;
    std::vector<std::string> argv;
};

/// How many bytes the arguments of one call may have, names and values together. No part of a call's path holds less:
/// command line (body-file), protocol, queue, trail, script host.
inline constexpr std::size_t kMostArgumentBytes = 16 * 1024 * 1024;

/// A call that is refused for its arguments.
class ToolError final : public std::runtime_error {
public:
    /// "missing required argument: " and the name (or a phrase in its place).
    static ToolError missingArg(std::string_view name);
    /// The text alone.
    static ToolError badArg(const std::string& text);
    /// More than kMostArgumentBytes.
    static ToolError tooLong(std::size_t bytes);

private:
    using std::runtime_error::runtime_error;
};

/// What the caller is told about one argument of a call. It never changes what runs.
struct Remark {
    std::string argument;
    std::string sentence; ///< names the argument and what the tool makes of it
    bool noEffect = false; ///< the call does the same without the argument

    /// Of an argument without effect.
    static Remark withoutEffect(std::string_view argument, std::string sentence)
    {
        return {.argument = std::string(argument), .sentence = std::move(sentence), .noEffect = true};
    }
};

/// Throws ToolError for arguments that are longer than kMostArgumentBytes.
void checkLength(const Args& args);

/// Everything the gate knows of an action: a plain record. The gate knows nothing of mail or calendars.
///
/// `build` and `preview` change nothing in the world; the first change happens when the tool runs.
struct Tool {
    std::string id; ///< family, a dot and the verb ("mail.search")
    std::string summary; ///< what the agent reads to decide how to call the tool
    Effect effect = Effect::destructive;
    std::vector<Argument> arguments; ///< in the order of the help; keys outside this list are ignored

    /// Validates the arguments and gives the script; throws ToolError to refuse the call. Always present.
    std::function<Invocation(const Args&)> build;
    /// When present, the tool runs in this process and the script of `build` is not run. May throw.
    std::function<std::string(const Args&)> nativeRun = nullptr;
    /// What a call is kept as when it has to wait: with what only the caller's process knows. Without it: as it is.
    std::function<Args(const Args&)> whileItWaits = nullptr;
    /// A line for the approval card, obtained by read-only work; nothing when that fails.
    std::function<std::optional<std::string>(const Args&)> preview = nullptr;
    /// Works on a successful output.
    std::function<std::string(const std::string&)> transform = nullptr;
    /// Whether an automatic, successful run with this output deserves an audit row.
    std::function<bool(const std::string&)> auditAutoRun = nullptr;

    /// What the formats of the arguments cannot say, from the arguments alone: one that another one overrides.
    std::function<std::vector<Remark>(const Args&)> remarks = nullptr;
    /// What the answer leaves out, in sentences, from the output before `transform`.
    std::function<std::vector<std::string>(const std::string&)> omissions = nullptr;
};

} // namespace mervo
