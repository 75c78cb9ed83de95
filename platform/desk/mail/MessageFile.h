#pragma once

#include "platform/descriptor.h"
#include "platform/desk/mail/MessageHead.h"
#include "platform/desk/mail/MessageRecord.h"
#include "platform/desk/mail/TextStore.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// One message file: its head for the index, its bytes for the reader.
namespace mervo::desk {

/// Reads the heads of messages in one Maildir.
class HeadReader {
public:
    explicit HeadReader(const std::filesystem::path& maildir);

    /// Everything but the id. A file whose head makes no sense still has its size, date and name. The texts are
    /// kept in `texts`. Nothing when the file has vanished or is no file.
    std::optional<MessageHeader> read(const MaildirEntry& entry, TextStore& texts);

private:
    MessageHead readHead(int descriptor, std::size_t fileSize);

    platform::Descriptor cur_, new_;
    std::string buffer_;
};

/// The heads of many messages, oldest received first; those that have vanished are left out.
std::vector<MessageHeader> readHeads(
    const std::filesystem::path& maildir, const std::vector<const MaildirEntry*>& entries, TextStore& texts);

/// The whole file. Throws MailError; MessageGone when it is not there.
std::string readMessageFile(const std::filesystem::path& file);

} // namespace mervo::desk
