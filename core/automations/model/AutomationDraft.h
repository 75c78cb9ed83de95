#pragma once

#include "core/automations/model/Automation.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace mervo {

/// What an automation shall be: what callers give to the engine to make or change one.
struct AutomationDraft {
    struct Agent {
        std::string prompt;
        std::string model;
        std::string client;
        std::optional<std::string> effort = {};
        bool visible = true;
        std::optional<std::int64_t> screen = {};
        bool operator==(const Agent&) const = default;
    };
    struct Script {
        std::string command;
        bool notifyOnFail = false;
        bool operator==(const Script&) const = default;
    };
    struct Tool {
        std::string tool;
        std::string args;
        bool notifyOnFail = false;
        bool operator==(const Tool&) const = default;
    };
    using Work = std::variant<Agent, Script, Tool>;

    std::string name = {};
    Work work = Agent{};
    Automation::Schedule schedule = Automation::Interval{Automation::kUsualMinutes};
    std::optional<std::string> cwd = {}; ///< may begin with a tilde
    bool enabled = true;

    bool operator==(const AutomationDraft&) const = default;

    /// The command under which a tool automation is stored: "'<path of mervo>' run <tool> <args>", for a shell. The
    /// arguments stand as they are, trimmed of white space.
    static std::string toolCommand(std::string_view tool, std::string_view args);
};

/// A tool and its arguments, read back from its command: what stands behind " run ".
struct ToolCall {
    std::string tool;
    std::string args;
    static ToolCall ofCommand(std::string_view command);
};

/// The program `mervo` that jobs and commands name: the running program when it is that, else the bundle's.
std::filesystem::path mervoBinary();

} // namespace mervo
