#include "platform/desk/applications/ConsentGuard.h"

#include "platform/desk/consent/Consent.h"

namespace mervo::desk {
namespace {

using applescript::ApplicationRegistry;
using applescript::ScriptError;
namespace ErrorNumber = applescript::ErrorNumber;

Consent::Verdict verdict(const ApplicationRegistry::Entry& entry, Sections sections)
{
    try {
        return Consent::ofDesk(sections).use(entry.bundleId);
    } catch (const ConfigurationError& error) {
        throw ScriptError(ErrorNumber::handlerFailed, error.what());
    }
}

} // namespace

ApplicationRegistry::Guard consentGuard(Sections sections)
{
    return [sections](const ApplicationRegistry::Entry& entry) {
        const Consent::Verdict found = verdict(entry, sections);
        if (found.isAllowed)
            return;
        throw ScriptError(ErrorNumber::notAuthorized,
            found.why.empty() ? ""
                              : "Not authorized to send Apple events to " + entry.names.front() + ". " + found.why);
    };
}

} // namespace mervo::desk
