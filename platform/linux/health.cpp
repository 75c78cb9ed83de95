#include "platform/health.h"

#include "platform/process.h"
#include "platform/programs.h"

#include <nlohmann/json.hpp>

namespace mervo::platform {

namespace {

/// The program of the local applications prints an array of objects under these keys.
Finding toFinding(const nlohmann::json& object)
{
    Finding finding;
    finding.id = object.at("id").get<std::string>();
    finding.label = object.at("label").get<std::string>();
    finding.detail = object.value("detail", "");
    finding.remedy = object.value("remedy", "");
    if (object.at("ok").get<bool>())
        finding.state = finding.remedy.empty() ? Finding::State::works : Finding::State::limited;
    return finding;
}

Finding notAsked(const std::filesystem::path& program, const std::string& reason)
{
    Finding finding;
    finding.id = "applications";
    finding.label = "Local applications";
    finding.detail = program.string() + " could not be asked: " + reason;
    finding.remedy = "Install the program again; a part of it is missing or damaged.";
    return finding;
}

} // namespace

std::vector<Finding> health() noexcept
{
    const std::filesystem::path program = platformProgram("desk-health");
    try {
        const Outcome outcome = run({program.string(), {}, {}, false});
        std::vector<Finding> findings;
        for (const auto& object : nlohmann::json::parse(outcome.output).get<std::vector<nlohmann::json>>())
            findings.push_back(toFinding(object));
        return findings;
    } catch (const nlohmann::json::exception&) {
        return {notAsked(program, "its answer cannot be understood")};
    } catch (const std::exception& error) {
        return {notAsked(program, error.what())};
    }
}

} // namespace mervo::platform
