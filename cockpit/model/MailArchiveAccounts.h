#pragma once

#include "cockpit/model/Surroundings.h"

namespace mervo {

/// The archive's accounts as they are: Mail's own list, and the owner's keychain.
class MailArchiveAccounts final : public ArchiveAccounts {
public:
    void storePassword(const std::string& email, const std::string& password) override;
    void removePassword(const std::string& email) override;
    std::vector<GmailAccount> gmail() override;
};

} // namespace mervo
