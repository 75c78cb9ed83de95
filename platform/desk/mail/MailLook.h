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

/// What this process knows of one Maildir: the last snapshot, and the changes since then that it made itself or that it
/// noticed when a file had been renamed. A loop that changes thousands of messages needs no new snapshot for each.
class MailLook {
public:
    explicit MailLook(std::filesystem::path maildir);

    enum class OwnChanges { end, keep }; ///< whether a change by this process invalidates the snapshot
    /// The last snapshot while it is valid, which is half a second. Null otherwise.
    std::shared_ptr<const MailboxSnapshot> snapshot(OwnChanges changes) const;
    void take(std::shared_ptr<const MailboxSnapshot> snapshot);

    /// The last known file of a message; does not touch the disk. Throws MessageGone.
    MaildirEntry entry(const MailboxSnapshot& mailbox, const MessageRecord& message) const;

    /// Calls `act` with the file of a message until it returns true, that is, found the file. When another program has
    /// renamed it, it is looked up in a new listing, which is reused for further messages. Throws MessageGone, and
    /// whatever `act` throws.
    void withFile(const MailboxSnapshot& mailbox, const MessageRecord& message,
        const std::function<bool(const MaildirEntry&)>& act);

    /// Records changes by this process.
    void renamed(std::string_view base, MaildirEntry entry);
    void removed(std::string_view base);
    void changed() noexcept { isChanged_ = true; } ///< to messages that are not in the snapshot

    /// Read on first use after a snapshot was taken.
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
