#pragma once

#include "cockpit/model/archive/ArchiveAccounts.h"

namespace mervo {

/// Mail's list of accounts, and the passwords in the owner's keychain.
class MailArchiveAccounts final : public ArchiveAccounts {
public:
    void storePassword(const std::string& email, const platform::Secret& password) override;
    void removePassword(const std::string& email) override;
    std::vector<GmailAccount> gmail() override;
};

} // namespace mervo
