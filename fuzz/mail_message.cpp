// The bytes of one message file, from its head to its text: what any sender in the world can put before the desk.

#include "platform/desk/mail/Answer.h"
#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/MessageHead.h"
#include "platform/desk/mail/MessageRecord.h"
#include "platform/desk/mime/MimeReader.h"
#include "platform/desk/mime/MimeWriter.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace mervo::desk;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void requireOneLine(std::string_view text)
{
    require(mervo::platform::isValidUtf8(text));
    require(text.find_first_of("\r\n") == std::string_view::npos);
}

/// What the file holds must go through any transport: lines of 998 octets at most, no NUL, no lone return or point.
void requireCarried(int file)
{
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    require(pread(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = std::string_view(text).substr(start, end - start);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        require(line.size() <= 998 && line != "." && !line.starts_with("From "));
        require(line.find_first_of(std::string_view("\0\r", 2)) == std::string_view::npos);
        start = end + 1;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    require(endOfHead(bytes).value_or(0) <= size);
    const MessageHead head = readMessageHead(bytes);
    requireOneLine(head.subject);
    requireOneLine(head.sender);
    requireOneLine(head.messageId);
    for (const MailAddress& address : parseAddressList(head.to)) {
        requireOneLine(address.name);
        requireOneLine(address.address);
    }
    const MimeContent content = readMime(bytes);
    require(mervo::platform::isValidUtf8(content.text));
    const MailAccountSettings own{.name = "A", .addresses = {"me@desk.example"}};
    for (const OutgoingMail& answer : {replyTo(bytes, own, {own}, ReplyTo::all), forwardOf(bytes, own)}) {
        for (const std::string& id : answer.references)
            require(id.find_first_of("\r\n <>") == std::string::npos);
        requireOneLine(answer.subject);
        for (const MailAddress& address : answer.to)
            require(isPlainAddress(address.address));
    }
    const int nowhere = memfd_create("message", MFD_CLOEXEC);
    writeMime(
        {.from = {{}, "me@desk.example"}, .subject = head.subject, .text = content.text, .forwarded = bytes}, nowhere);
    requireCarried(nowhere);
    close(nowhere);
    const std::string chunk(bytes); // what is stored is outside data as well
    std::vector<MessageRecord> records;
    try {
        readRecords(chunk, records);
    } catch (const MalformedRecords&) {
    }
    for (const MessageRecord& record : records)
        require(record.to().data() + record.to().size() <= chunk.data() + chunk.size());
    return 0;
}
