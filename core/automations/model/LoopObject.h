#pragma once

#include "core/automations/model/AutomationDraft.h"
#include "core/foundation/Timestamps.h"

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

/// What `loop.json` holds: a JSON object.
///
///     name          text, required        createdAt     seconds since 1970, written once
///     schedule      {"type":"interval","everyMinutes":n}, {"type":"calendar","hour":n,"minute":n} or
///                   {"type":"hours","hours":[n,...],"minute":n}; of any other type an interval (360 minutes)
///     cwd           text                  timeoutSeconds  0 or less: the usual limit
///     kind          "script"; else it is an agent
///     command, notifyOnFail               of a script; a tool is stored as a script
///     model, client, visible, effort, screen   of an agent, whose prompt lies in AGENT.md
///     prompt        text, where there is no AGENT.md; never written
///     system        true: made by the system
///     dangerous     true: only ever set by hand
///
/// Members that nobody here knows are kept. Written with sorted members over several lines.
namespace mervo::LoopObject {

/// A JSON object of 1 MiB at most; nothing when the file cannot be read or holds anything else.
std::optional<nlohmann::json> read(const std::filesystem::path& file);

/// A new automation's.
nlohmann::json make(const AutomationDraft& draft, Timestamps::Time createdAt);

/// A stored one after a change. Name and kind stay as they are. A positive `timeoutSeconds` set by hand survives.
nlohmann::json edited(nlohmann::json stored, const AutomationDraft& draft);

/// Its members as an automation, without what other files say of it. Nothing when there is no name.
std::optional<Automation> automation(const nlohmann::json& object);

/// The bytes of the file.
std::string text(const nlohmann::json& object);

} // namespace mervo::LoopObject
