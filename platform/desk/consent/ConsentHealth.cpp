#include "platform/desk/consent/ConsentHealth.h"

#include "platform/desk/consent/Consent.h"
#include "platform/desk/health/Findings.h"

#include <fmt/format.h>

namespace mervo::desk {
namespace {

constexpr const char* kId = "desk.consent";
constexpr const char* kLabel = "Consent";

std::string_view inWords(Decision decision)
{
    switch (decision) {
    case Decision::undecided:
        return "not decided";
    case Decision::allowed:
        return "allowed";
    case Decision::refused:
        return "refused";
    case Decision::restricted:
        return "restricted";
    case Decision::writeOnly:
        return "write-only, which lets nothing be read";
    }
    return {};
}

} // namespace

std::vector<Finding> examineConsentSettings(const Configuration& configuration)
{
    return {makeFinding("desk.consent.ask", "Asking for consent",
        whenUndecided(configuration) == WhenUndecided::ask
            ? "an application that nothing is decided for is asked for at its first use"
            : "an application that nothing is decided for may be used (\"ask\" in [consent] changes that)")};
}

std::vector<Finding> examineConsentData()
{
    const ConsentRecord record = ConsentRecord::ofDesk();
    std::string closed, remedies;
    std::size_t allowed = 0;
    try {
        for (const auto& [scope, decision] : record.all()) {
            if (decision == Decision::allowed) {
                ++allowed;
                continue;
            }
            closed +=
                fmt::format("{}{} ({}): {}", closed.empty() ? "" : "\n", scopeName(scope), scope, inWords(decision));
            remedies += fmt::format("{}\"{}\"", remedies.empty() ? "" : ", ", scope);
        }
    } catch (const std::exception& error) {
        return {makeFinding(kId, kLabel, error.what(),
            "Until the file is corrected or deleted every use of an application is refused.")};
    }
    if (!closed.empty()) {
        Finding finding = makeFinding(kId, kLabel, closed);
        finding.state = Finding::State::limited;
        finding.remedy = fmt::format(
            "To allow what you refused, write \"allowed\" for it in {}: {}.", record.file().string(), remedies);
        return {finding};
    }
    return {makeFinding(
        kId, kLabel, allowed == 0 ? "nothing is decided" : fmt::format("{} allowed, none refused", allowed))};
}

} // namespace mervo::desk
