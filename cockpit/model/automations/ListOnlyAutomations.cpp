#include "cockpit/model/automations/ListOnlyAutomations.h"

#include "core/automations/engine/EngineError.h"
#include "core/automations/engine/RondelEngine.h"

#include <algorithm>

namespace mervo {

namespace {

[[noreturn]] void refuse(const std::string& name, const char* what)
{
    const auto all = RondelEngine::list();
    if (std::ranges::find(all, name, &Automation::name) == all.end())
        throw EngineError::noSuchLoop(name);
    throw EngineError::failed(std::string("this build cannot ") + what + " automations");
}

} // namespace

std::vector<Automation> ListOnlyAutomations::list()
{
    return listing_.list();
}

std::filesystem::path ListOnlyAutomations::logFile(const std::string& name)
{
    return RondelEngine::logURL(name);
}

void ListOnlyAutomations::runNow(const std::string& name)
{
    refuse(name, "run");
}

void ListOnlyAutomations::stop(const std::string& name)
{
    refuse(name, "stop");
}

void ListOnlyAutomations::pause(const std::string& name)
{
    refuse(name, "pause or resume");
}

void ListOnlyAutomations::resume(const std::string& name)
{
    refuse(name, "pause or resume");
}

void ListOnlyAutomations::remove(const std::string& name)
{
    refuse(name, "delete");
}

void ListOnlyAutomations::openLive(const std::string& name)
{
    refuse(name, "show");
}

} // namespace mervo
