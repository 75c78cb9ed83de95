#include "core/automations/model/AgentClients.h"

#include <algorithm>

namespace mervo::AgentClients {

std::span<const AgentClient> all()
{
    static const std::vector<AgentClient> clients{
        {.id = "claude",
            .display = "Claude Code",
            .modelOptions = {"sonnet", "opus", "haiku"},
            .modelPlaceholder = "",
            .supportsEffort = true,
            .defaultModel = "sonnet",
            .supportsLiveView = true},
        {.id = "codex",
            .display = "Codex",
            .modelPlaceholder = "gpt-5-codex (blank = client default)",
            .supportsLiveView = true},
        {.id = "agy",
            .display = "Antigravity",
            .modelPlaceholder = "Gemini 3.1 Pro (High) - blank = client default",
            .supportsLiveView = false},
        {.id = "grok",
            .display = "Grok",
            .modelPlaceholder = "grok-4 (blank = client default)",
            .supportsLiveView = true},
    };
    return clients;
}

bool isKnown(std::string_view id)
{
    return std::ranges::any_of(all(), [id](const AgentClient& client) { return client.id == id; });
}

const AgentClient& client(std::string_view id)
{
    const auto found = std::ranges::find(all(), id, &AgentClient::id);
    return found == all().end() ? all().front() : *found;
}

} // namespace mervo::AgentClients
