#include "platform/desk/applications/shared/DeskApplicationBase.h"

namespace mervo::desk {

using applescript::ScriptError;

RunningApplications DeskApplicationBase::running() const
{
    try {
        return RunningApplications(Configuration::load(sections_));
    } catch (const ConfigurationError& error) {
        throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
}

bool DeskApplicationBase::isRunning() const
{
    return isLaunched_ || running().isRunning(which_);
}

void DeskApplicationBase::quit(applescript::Saving)
{
    try {
        running().terminate(which_);
    } catch (const RunningError& error) {
        throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
    isLaunched_ = false;
}

} // namespace mervo::desk
