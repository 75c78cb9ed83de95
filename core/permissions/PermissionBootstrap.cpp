#include "core/permissions/PermissionBootstrap.h"

#include "core/foundation/ConfigDir.h"
#include "core/foundation/Json.h"
#include "platform/files.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <utility>

namespace mervo {
namespace {

namespace automation = platform::automation;
using automation::AskUser;
using platform::Authorization;
using platform::Entity;
using Grants = std::map<std::string, bool>;
using ScopeResult = PermissionBootstrap::ScopeResult;

constexpr std::chrono::milliseconds kPause{150};
constexpr std::chrono::seconds kPatience{6}; // for an application that starts

constexpr const char* kRefusedWords = "denied - allow in System Settings → Privacy & Security → Automation";

struct Target {
    const char* bundleId;
    const char* label;
};
constexpr std::array<Target, 8> kTargets{
    {{"com.apple.mail", "Mail (control)"}, {"com.apple.iCal", "Calendar (control)"},
        {"com.apple.reminders", "Reminders (control)"}, {"com.apple.AddressBook", "Contacts (control)"},
        {"com.apple.Notes", "Notes (control)"}, {"com.apple.MobileSMS", "Messages (control)"},
        {"com.apple.finder", "Finder (control)"}, {"com.apple.systemevents", "System Events (control)"}}};

ScopeResult automationResult(const Target& target, automation::Status status)
{
    ScopeResult result{std::string("automation:") + target.bundleId, target.label, std::nullopt, {}};
    switch (status) {
    case automation::kAllowed:
        result.granted = true;
        result.detail = "allowed";
        break;
    case automation::kRefused:
        result.granted = false;
        result.detail = kRefusedWords;
        break;
    case automation::kWouldAsk:
        result.detail = "not yet granted";
        break;
    case automation::kNotRunning:
        result.detail = "not set up yet - run Set up access";
        break;
    default:
        result.detail = fmt::format("unavailable (status {})", status);
    }
    return result;
}

/// The same for an application that is not asked: a closed one is read from what was known last.
ScopeResult recordedResult(const Target& target, automation::Status status, const Grants& grants)
{
    ScopeResult result = automationResult(target, status);
    const auto known = grants.find(target.bundleId);
    if (status == automation::kNotRunning && known != grants.end()) {
        result.granted = known->second;
        result.detail = known->second ? "allowed (granted at setup; app closed)" : kRefusedWords;
    }
    return result;
}

std::pair<std::optional<bool>, const char*> eventKitStatus(std::optional<Authorization> status)
{
    if (!status)
        return {false, "unknown status"};
    switch (*status) {
    case Authorization::notDetermined:
        return {std::nullopt, "not yet granted"};
    case Authorization::restricted:
        return {false, "restricted by system policy"};
    case Authorization::denied:
        return {false, "denied - allow in System Settings → Privacy & Security"};
    case Authorization::fullAccess:
        return {true, "allowed"};
    case Authorization::writeOnly:
        return {false, "write-only - set Full Access in System Settings → Privacy & Security → Calendars"};
    }
    return {false, "unknown status"};
}

std::filesystem::path grantsFile()
{
    return ConfigDir::url() / "autonomy-grants.json";
}

/// What is no boolean counts for nothing.
Grants readGrants()
{
    Grants grants;
    const auto object = parsedJson<nlohmann::json>(platform::readFile(grantsFile()).value_or(""));
    if (object.is_object()) {
        for (const auto& [bundleId, value] : object.items()) {
            if (value.is_boolean())
                grants[bundleId] = value.get<bool>();
        }
    }
    return grants;
}

/// Nothing decided now leaves what was known.
void keepGrants(const PermissionBootstrap::Results& results)
{
    Grants grants = readGrants();
    for (std::size_t i = 0; i < kTargets.size(); ++i) {
        if (results[i].granted)
            grants[kTargets[i].bundleId] = *results[i].granted;
    }
    try {
        ConfigDir::ensureExists();
        if (const auto error = platform::replaceFile(grantsFile(), compactJson(nlohmann::json(grants))))
            platform::logError("Permissions", grantsFile().string() + ": " + error.message());
    } catch (const std::exception& error) {
        platform::logError("Permissions", error.what());
    }
}

} // namespace

PermissionBootstrap::PermissionBootstrap(PermissionSystem system)
    : system_(std::move(system))
{
}

PermissionBootstrap::Results PermissionBootstrap::probe()
{
    const std::vector<std::string> launched = launchClosed();
    for (const std::string& bundleId : launched)
        waitFor(bundleId);
    Results results;
    for (const Target& target : kTargets)
        results.push_back(automationResult(target, system_.permission(target.bundleId, AskUser::yes)));
    settleEventKit();
    appendEventKit(results);
    keepGrants(results);
    for (const std::string& bundleId : launched)
        system_.terminate(bundleId);
    return results;
}

PermissionBootstrap::Results PermissionBootstrap::status()
{
    const Grants grants = readGrants();
    Results results;
    for (const Target& target : kTargets)
        results.push_back(recordedResult(target, system_.permission(target.bundleId, AskUser::no), grants));
    appendEventKit(results);
    return results;
}

/// All are asked before the first is started: which were open is the owner's doing.
std::vector<std::string> PermissionBootstrap::launchClosed()
{
    std::vector<std::string> closed;
    for (const Target& target : kTargets) {
        if (system_.permission(target.bundleId, AskUser::no) == automation::kNotRunning)
            closed.emplace_back(target.bundleId);
    }
    for (const std::string& bundleId : closed)
        system_.launch(bundleId);
    return closed;
}

void PermissionBootstrap::waitFor(const std::string& bundleId)
{
    const auto deadline = system_.now() + kPatience;
    while (system_.permission(bundleId, AskUser::no) == automation::kNotRunning && system_.now() < deadline)
        system_.sleep(kPause);
}

void PermissionBootstrap::settleEventKit()
{
    for (const Entity entity : {Entity::events, Entity::reminders}) {
        if (system_.authorization(entity) == Authorization::notDetermined)
            system_.requestFullAccess(entity);
    }
}

void PermissionBootstrap::appendEventKit(Results& results) const
{
    const auto [events, eventsDetail] = eventKitStatus(system_.authorization(Entity::events));
    results.push_back({"calendar", "Calendar (events)", events, eventsDetail});
    const auto [reminders, remindersDetail] = eventKitStatus(system_.authorization(Entity::reminders));
    results.push_back({"reminders", "Reminders", reminders, remindersDetail});
}

std::string PermissionBootstrap::renderText(const Results& results)
{
    std::string text;
    for (const ScopeResult& result : results) {
        const char* mark = !result.granted ? "❓" : *result.granted ? "✅" : "⛔";
        text += fmt::format("{}{} {:<22} {}", text.empty() ? "" : "\n", mark, result.label, result.detail);
    }
    return text;
}

std::string PermissionBootstrap::renderJSON(const Results& results)
{
    auto array = nlohmann::ordered_json::array();
    for (const ScopeResult& result : results) {
        nlohmann::ordered_json object{{"id", result.id}, {"label", result.label}};
        if (result.granted)
            object["granted"] = *result.granted;
        object["detail"] = result.detail;
        array.push_back(std::move(object));
    }
    return compactJson(array);
}

} // namespace mervo
