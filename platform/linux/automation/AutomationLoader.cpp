#include "platform/automation.h"

#include "platform/linux/automation/AutomationModule.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/unified_log.h"

#include <exception>
#include <functional>

namespace mervo::platform::automation {
namespace {

/// Throws std::runtime_error when the module is missing from the bundle.
const Backend& backend()
{
    static const Backend* const loaded = load(kAutomationModule)();
    return *loaded;
}

/// What fails goes to the log.
void attempt(const std::string& bundleId, const std::function<void()>& action) noexcept
{
    try {
        action();
    } catch (const std::exception& error) {
        logError("Automation", bundleId + ": " + error.what());
    }
}

} // namespace

Status permission(const std::string& bundleId, AskUser ask) noexcept
{
    Status status = kFailed;
    attempt(bundleId, [&] { status = backend().permission(bundleId, ask); });
    return status;
}

void launch(const std::string& bundleId) noexcept
{
    attempt(bundleId, [&] {
        const Outcome outcome =
            run({.program = platformProgram("open").string(), .arguments = {"-g", "-j", "-b", bundleId}});
        if (outcome.status != 0)
            logError("Automation", bundleId + " could not be started: " + outcome.error);
    });
}

void terminate(const std::string& bundleId) noexcept
{
    attempt(bundleId, [&] { backend().terminate(bundleId); });
}

} // namespace mervo::platform::automation
