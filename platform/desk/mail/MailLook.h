#pragma once

#include "platform/desk/mail/MailboxSnapshot.h"
#include "platform/desk/mail/MaildirKeywords.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace mervo::desk {

/// One Maildir as this process knows it: the last look at its messages, and what became of them since, through this
/// process or as far as another one's renames were met. A loop over thousands of messages needs no new look for each
/// that it changes, nor for each that another program has changed.
class MailLook {
public:
    explicit MailLook(std::filesystem::path maildir);

    enum class OwnChanges { end, keep }; ///< whether a look ends with the first change that this process makes
    /// The last look while it serves: for half a second. Null when there is none, or none any more.
    std::shared_ptr<const MailboxSnapshot> snapshot(OwnChanges changes) const;
    void take(std::shared_ptr<const MailboxSnapshot> snapshot);

    /// Where a message is, as far as is known; the disk is not asked. Throws MessageGone.
    MaildirEntry entry(const MailboxSnapshot& mailbox, const MessageRecord& message) const;

    /// Calls `act` with the file of a message until it says that there was one. A message that is not where it is
    /// believed to be was renamed by another program: it is looked for in a new listing, one of which serves for many.
    /// Throws MessageGone, and whatever `act` throws.
    void withFile(const MailboxSnapshot& mailbox, const MessageRecord& message,
        const std::function<bool(const MaildirEntry&)>& act);

    /// What this process did.
    void renamed(std::string_view base, MaildirEntry entry);
    void removed(std::string_view base);
    void changed() noexcept { isChanged_ = true; } ///< with messages that are not in the look

    /// Read when first asked after a look was taken.
    MaildirKeywords& keywords();

private:
    using Clock = std::chrono::steady_clock;
    struct Listing {
        std::unordered_map<std::string, MaildirEntry> entries; // by base
        Clock::time_point taken;
        Clock::duration cost{};
    };

    bool listAgain();
    [[noreturn]] void failGone(std::string_view base) const;

    std::filesystem::path maildir_;
    std::shared_ptr<const MailboxSnapshot> snapshot_;
    Clock::time_point taken_;
    bool isChanged_ = false;
    std::unordered_map<std::string, std::optional<MaildirEntry>> since_; // by base; none: it is gone
    Listing listing_;
    std::optional<MaildirKeywords> keywords_;
};

} // namespace mervo::desk
