#include "cockpit/model/archive/MailArchiveAccounts.h"

#include "core/secrets/Keychain.h"

namespace mervo {

void MailArchiveAccounts::storePassword(const std::string& email, const platform::Secret& password)
{
    Keychain::setPassword(password, email);
}

void MailArchiveAccounts::removePassword(const std::string& email)
{
    Keychain::deletePassword(email);
}

std::vector<GmailAccount> MailArchiveAccounts::gmail()
{
    return MailAccounts::gmail();
}

} // namespace mervo
