#pragma once

#include "core/tools/mail/MailAccounts.h"
#include "platform/secret.h"

#include <string>
#include <vector>

namespace mervo {

using GmailAccount = MailAccounts::Info;

/// The mail accounts and passwords that archiving needs. The operations wait for other programs and run off the main
/// thread.
class ArchiveAccounts {
public:
    ArchiveAccounts() = default;
    ArchiveAccounts(const ArchiveAccounts&) = delete;
    ArchiveAccounts& operator=(const ArchiveAccounts&) = delete;
    virtual ~ArchiveAccounts() = default;

    virtual void storePassword(const std::string& email, const platform::Secret& password) = 0; ///< throws a sentence
    virtual void removePassword(const std::string& email) = 0; ///< throws a sentence
    virtual std::vector<GmailAccount> gmail() = 0; ///< empty when they cannot be asked for
};

} // namespace mervo
