#include "core/automations/engine/AutomationEngine.h"

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

EngineError EngineError::noSuchLoop(const std::string& name)
{
    return EngineError("no such automation: " + name);
}

EngineError EngineError::alreadyExists(const std::string& name)
{
    return EngineError("automation '" + name + "' already exists (use edit)");
}

EngineError EngineError::notRunning(const std::string& name)
{
    return EngineError("'" + name + "' is not running");
}

EngineError EngineError::failed(const std::string& text)
{
    return EngineError(text);
}

std::vector<Automation> ListingEngine::list()
{
    return listing_.list();
}

std::filesystem::path ListingEngine::logFile(const std::string& name)
{
    return RondelEngine::logURL(name);
}

void ListingEngine::runNow(const std::string& name)
{
    refuse(name, "run");
}

void ListingEngine::stop(const std::string& name)
{
    refuse(name, "stop");
}

void ListingEngine::setEnabled(const std::string& name, bool)
{
    refuse(name, "pause or resume");
}

void ListingEngine::remove(const std::string& name)
{
    refuse(name, "delete");
}

void ListingEngine::openLive(const std::string& name)
{
    refuse(name, "show");
}

} // namespace mervo
