#pragma once

#include "platform/desk/mail/IndexDatabase.h"
#include "platform/desk/mail/MailboxSnapshot.h"
#include "platform/desk/mail/TextStore.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// The stored headers of one mailbox while a new listing is laid over them: messages that are known keep their ids,
/// new ones are parsed, and only the chunks that changed are written. Lives within one change of the database.
/// Throws IndexError, sqlite::Error, MalformedRecords.
class MailboxMerge {
public:
    explicit MailboxMerge(RecordChunks stored);

    /// False when a listed message was not found under its name: another program has just renamed it.
    [[nodiscard]] bool apply(
        const std::filesystem::path& maildir, const std::vector<MaildirEntry>& entries, IndexDatabase::Change& change);
    void setAttachments(std::uint32_t id, std::int32_t count);
    bool isChanged() const noexcept { return !touched_.empty(); }

    /// Puts the changed chunks together again and writes them. What was changed is settled then.
    void write(const IndexDatabase::Folder& folder, IndexDatabase::Change& change);
    /// The messages as they are written now. The last thing to ask for: it takes the memory along.
    std::shared_ptr<const MailboxSnapshot> finish(const std::filesystem::path& maildir);

private:
    std::size_t touchedLength() const;
    void rename(std::size_t at, const MaildirEntry& entry);
    void removeUnseen(const std::vector<bool>& isSeen);
    std::size_t add(const std::filesystem::path& maildir, const std::vector<const MaildirEntry*>& entries,
        IndexDatabase::Change& change);

    RecordChunks chunks_;
    TextStore texts_; // of messages that are in no chunk yet
    std::vector<MessageHeader> headers_; // with texts in both
    std::vector<std::int64_t> chunkOf_; // for each header; never descends
    std::map<std::int64_t, std::size_t> sizes_; // of the chunks, in messages
    std::set<std::int64_t> touched_;
};

} // namespace mervo::desk
