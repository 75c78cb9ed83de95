#pragma once

#include "core/automations/engine/AutomationEngine.h"
#include "core/tools/mail/MailAccounts.h"
#include "platform/desktop/LoginItem.h"
#include "platform/desktop/Notifier.h"
#include "platform/desktop/Workspace.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace mervo {

using GmailAccount = MailAccounts::Info;

/// What the cockpit asks of the archive's accounts. The operations wait for other programs and run off the main thread.
class ArchiveAccounts {
public:
    ArchiveAccounts() = default;
    ArchiveAccounts(const ArchiveAccounts&) = delete;
    ArchiveAccounts& operator=(const ArchiveAccounts&) = delete;
    virtual ~ArchiveAccounts() = default;

    virtual void storePassword(const std::string& email, const std::string& password) = 0; ///< throws a sentence
    virtual void removePassword(const std::string& email) = 0; ///< throws a sentence
    virtual std::vector<GmailAccount> gmail() = 0; ///< empty when they cannot be asked for
};

/// The wall clock for what a person reads, and the steady one for what must not jump with it.
struct Clock {
    std::function<std::chrono::system_clock::time_point()> wall = std::chrono::system_clock::now;
    std::function<std::chrono::steady_clock::time_point()> steady = std::chrono::steady_clock::now;
};

/// All that the model needs of a desktop and of the engine. Everything outlives the model.
struct Surroundings {
    platform::Notifier& notifier;
    platform::Workspace& workspace;
    platform::LoginItem& loginItem;
    AutomationEngine& engine;
    ArchiveAccounts& archive;
    Clock clock = {};
};

} // namespace mervo
