#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// What an agent automation asks of its client.
struct AgentWork {
    std::string client; ///< an unknown one is taken for the first of AgentClients
    std::string model;
    std::optional<std::string> effort = {};
    std::string cwd; ///< the run's
    std::chrono::seconds timeout{};
    bool dangerous = false; ///< the client asks for no permission at all
};

/// The argument in whose place a client gets the prompt's text. One without it reads the prompt from standard input.
inline constexpr std::string_view kPromptPlaceholder = "@@RONDEL_PROMPT@@";

/// The client's program, to be found through PATH, and its arguments.
std::vector<std::string> agentCommand(const AgentWork& work);

} // namespace mervo
