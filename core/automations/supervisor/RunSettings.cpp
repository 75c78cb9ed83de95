#include "core/automations/supervisor/RunSettings.h"

#include "core/foundation/JsonMembers.h"
#include "platform/folders.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace mervo {

namespace {

std::optional<std::string> unlessEmpty(std::optional<std::string> text)
{
    return text && !text->empty() ? std::move(text) : std::nullopt;
}

} // namespace

RunSettings RunSettings::of(const nlohmann::json& loop, const RunPaths& paths)
{
    using JsonMembers::flag;
    using JsonMembers::text;
    RunSettings settings;
    settings.prompt = text(loop, "prompt").value_or("");
    settings.model = text(loop, "model").value_or(settings.model);
    const auto cwd = unlessEmpty(text(loop, "cwd"));
    settings.cwd = cwd ? platform::expandTilde(*cwd).string() : paths.folder().string();
    if (const auto timeout = JsonMembers::wholeNumber(loop, "timeoutSeconds"); timeout && *timeout > 0)
        settings.timeout = std::chrono::seconds(*timeout);
    settings.screen = JsonMembers::wholeNumber(loop, "screen");
    settings.visible = flag(loop, "visible").value_or(true);
    settings.effort = unlessEmpty(text(loop, "effort"));
    settings.isScript = text(loop, "kind") == "script";
    settings.client = text(loop, "client").value_or(settings.client);
    settings.dangerous = flag(loop, "dangerous").value_or(false);
    settings.command = text(loop, "command").value_or("");
    settings.notifyOnFail = flag(loop, "notifyOnFail").value_or(false);
    return settings;
}

} // namespace mervo
