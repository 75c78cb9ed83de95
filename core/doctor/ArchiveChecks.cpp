#include "core/doctor/Checks.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Text.h"
#include "core/secrets/Keychain.h"
#include "core/tools/mail/MailAccounts.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::Doctor {

namespace {

/// The addresses that mail.archive would log in with: those of the settings, then those of Mail that it knows by
/// itself.
std::vector<std::string> archivedAddresses()
{
    std::vector<std::string> addresses;
    const auto add = [&](const std::string& address) {
        if (!address.empty() && std::ranges::find(addresses, address) == addresses.end())
            addresses.push_back(address);
    };
    for (const IMAPArchiveAccount& account : HarnessConfig::load().imapAccounts)
        add(account.email);
    for (const MailAccounts::Info& account : MailAccounts::gmail())
        add(account.email);
    return addresses;
}

} // namespace

Finding archive()
{
    const std::vector<std::string> addresses = archivedAddresses();
    Finding finding;
    finding.state = State::works;
    finding.detail = addresses.empty() ? "no account needs it; messages are archived in their own folders" : "";
    std::vector<std::string> found, missing;
    try {
        for (const std::string& address : addresses)
            (Keychain::isKept(address) ? found : missing).push_back(Text::visibleLine(address));
    } catch (const Keychain::KeychainError& error) {
        finding.state = State::limited;
        finding.detail = fmt::format("the app passwords cannot be read: {}", error.what());
        return finding;
    }
    if (!found.empty())
        finding.detail = fmt::format("there is an app password for {}", Text::join(found, ", "));
    if (!missing.empty()) {
        finding.state = State::limited;
        finding.detail += fmt::format("{}no app password for {}: its messages cannot be archived",
            found.empty() ? "" : "\n", Text::join(missing, ", "));
        finding.remedy = "To keep one: mervo secret set " + Text::join(missing, "\nTo keep one: mervo secret set ");
    }
    return finding;
}

} // namespace mervo::Doctor
