#include "platform/desk/mail/MailLook.h"

#include "platform/unicode.h"

#include <fmt/format.h>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::chrono::milliseconds kOneLook{500};
constexpr int kRarely = 4; // listings take at most a fifth of the time
constexpr int kMostNames = 4; // of one message that is tried while another program renames it again and again

} // namespace

MailLook::MailLook(std::filesystem::path maildir)
    : maildir_(std::move(maildir))
{
}

std::shared_ptr<const MailboxSnapshot> MailLook::snapshot(OwnChanges changes) const
{
    const bool serves = Clock::now() - taken_ < kOneLook && (!isChanged_ || changes == OwnChanges::keep);
    return serves ? snapshot_ : nullptr;
}

void MailLook::take(std::shared_ptr<const MailboxSnapshot> snapshot)
{
    snapshot_ = std::move(snapshot);
    taken_ = Clock::now();
    isChanged_ = false;
    since_.clear();
    listing_ = {};
    keywords_.reset();
}

MaildirEntry MailLook::entry(const MailboxSnapshot& mailbox, const MessageRecord& message) const
{
    if (const auto known = since_.find(std::string(message.base())); known != since_.end()) {
        if (!known->second)
            failGone(message.base());
        return *known->second;
    }
    const bool isNewest = !snapshot_ || snapshot_.get() == &mailbox;
    const MessageRecord* newest = isNewest ? &message : snapshot_->withBase(message.base());
    if (newest == nullptr)
        failGone(message.base());
    return {std::string(newest->fileName()), newest->isNew()};
}

void MailLook::withFile(
    const MailboxSnapshot& mailbox, const MessageRecord& message, const std::function<bool(const MaildirEntry&)>& act)
{
    MaildirEntry tried = entry(mailbox, message);
    for (int names = 0; names < kMostNames; ++names) {
        if (act(tried))
            return;
        const std::string base(message.base());
        auto found = listing_.entries.find(base);
        if (found == listing_.entries.end() || found->second.fileName == tried.fileName) {
            // A new listing may well name it as before: it was renamed there and back.
            if (!listAgain())
                break;
            found = listing_.entries.find(base);
            if (found == listing_.entries.end())
                break;
        }
        tried = found->second;
        since_[found->first] = tried;
    }
    failGone(message.base());
}

/// False when the last listing is too young to be replaced.
bool MailLook::listAgain()
{
    const Clock::time_point start = Clock::now();
    if (start - listing_.taken < kRarely * listing_.cost)
        return false;
    listing_.entries.clear();
    for (MaildirEntry& entry : listMaildir(maildir_)) {
        std::string base(splitMaildirName(entry.fileName).base);
        listing_.entries.emplace(std::move(base), std::move(entry));
    }
    listing_.taken = Clock::now();
    listing_.cost = listing_.taken - start;
    return true;
}

void MailLook::failGone(std::string_view base) const
{
    throw MessageGone(fmt::format("The message {} is not there any more.", platform::withValidUtf8(base)));
}

void MailLook::renamed(std::string_view base, MaildirEntry entry)
{
    isChanged_ = true;
    since_[std::string(base)] = std::move(entry);
}

void MailLook::removed(std::string_view base)
{
    isChanged_ = true;
    since_[std::string(base)] = std::nullopt;
}

MaildirKeywords& MailLook::keywords()
{
    if (!keywords_)
        keywords_ = MaildirKeywords::read(maildir_);
    return *keywords_;
}

} // namespace mervo::desk
