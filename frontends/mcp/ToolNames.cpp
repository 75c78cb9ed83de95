#include "frontends/mcp/ToolNames.h"

#include "core/catalogue/Catalogue.h"

#include <algorithm>
#include <array>
#include <map>

namespace mervo::mcp::ToolNames {

namespace {

/// Clients that are known to refuse, or to garble, a name with a dot. The names are those that the clients send in
/// `initialize`, as github.com/apify/mcp-client-capabilities lists them.
constexpr std::array kRefuseDots = std::to_array<std::string_view>({
    // Claude Desktop, "String should match pattern '^[a-zA-Z0-9_-]{1,64}$'":
    // github.com/barryw/ImmichMCP/issues/4, github.com/loomle/loomle/issues/168
    "claude-ai",
    // Codex, "Expected a string that matches the pattern '^[a-zA-Z0-9_-]+$'": github.com/openai/codex/issues/8174
    "codex-mcp-client",
    // Cursor, "Tool name must only contain alphanumeric characters and underscores":
    // github.com/webstudio-is/webstudio/issues/5960, github.com/gemini-cli-extensions/workspace/issues/168
    "cursor-vscode",
    // Copilot CLI, "String should match pattern '^[a-zA-Z0-9_-]{1,128}$'": github.com/github/copilot-cli/issues/2581
    "github-copilot-developer",
    // Copilot for IntelliJ, the same failure: github.com/microsoft/copilot-intellij-feedback/issues/1583
    "JetBrains-IU-copilot-intellij",
});

std::string underscored(std::string_view id)
{
    std::string name(id);
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

} // namespace

Naming forClient(std::string_view clientName)
{
    const bool refuses = std::find(kRefuseDots.begin(), kRefuseDots.end(), clientName) != kRefuseDots.end();
    return refuses ? Naming::underscores : Naming::dots;
}

std::string published(std::string_view id, Naming naming)
{
    return naming == Naming::dots ? std::string(id) : underscored(id);
}

const Tool* find(std::string_view name)
{
    if (const Tool* tool = Tools::find(name))
        return tool;
    static const auto byUnderscoredName = [] {
        std::map<std::string, const Tool*, std::less<>> tools;
        for (const Tool* tool : Tools::all())
            tools.emplace(underscored(tool->id), tool);
        return tools;
    }();
    const auto found = byUnderscoredName.find(name);
    return found == byUnderscoredName.end() ? nullptr : found->second;
}

} // namespace mervo::mcp::ToolNames
