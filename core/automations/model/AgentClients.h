#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace mervo {

/// A program that runs an agent automation. Its id is also the program's name, found through PATH.
struct AgentClient {
    std::string_view id, display;
    std::vector<std::string_view> modelOptions = {}; ///< empty: any text, or none
    std::string_view modelPlaceholder;
    bool supportsEffort = false;
    std::optional<std::string_view> defaultModel = {};
    bool supportsLiveView = false;

    bool operator==(const AgentClient&) const = default;
};

namespace AgentClients {

std::span<const AgentClient> all();

/// The client of this id; for an unknown one the first of all.
const AgentClient& client(std::string_view id);

bool isKnown(std::string_view id);

} // namespace AgentClients

} // namespace mervo
