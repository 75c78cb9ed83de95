#include "platform/desk/Health.h"

#include <cstdio>
#include <nlohmann/json.hpp>

/// desk-health: what the desk stands on, as a JSON array of findings for `mervo doctor`. What is ok and has a remedy
/// all the same is limited. Changes nothing.
int main()
{
    auto findings = nlohmann::ordered_json::array();
    for (const mervo::platform::Finding& finding : mervo::desk::examineDesk()) {
        findings.push_back({{"id", finding.id}, {"label", finding.label},
            {"ok", finding.state != mervo::platform::Finding::State::broken}, {"detail", finding.detail},
            {"remedy", finding.remedy}});
    }
    const std::string text = findings.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    return std::puts(text.c_str()) < 0 ? 1 : 0;
}
