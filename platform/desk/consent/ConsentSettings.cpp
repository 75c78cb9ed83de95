#include "platform/desk/consent/ConsentSettings.h"

namespace mervo::desk {
namespace {

WhenUndecided read(const Table& consent)
{
    consent.refuseUnknownKeys({"ask"}, "of \"consent\"");
    return consent.flag("ask", false) ? WhenUndecided::ask : WhenUndecided::allow;
}

} // namespace

void checkConsentSection(const Table& consent)
{
    read(consent);
}

WhenUndecided whenUndecided(const Configuration& configuration)
{
    const auto consent = configuration.section(kConsentSection);
    return consent ? read(*consent) : WhenUndecided::allow;
}

} // namespace mervo::desk
