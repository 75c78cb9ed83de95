// The bytes of one message file, from its head to its text: what any sender in the world can put before the desk.

#include "platform/desk/mail/HeaderChunk.h"
#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/MessageHead.h"
#include "platform/desk/mime/MimeReader.h"
#include "platform/unicode.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

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
    std::vector<MessageHeader> headers; // a stored chunk is outside data as well
    static_cast<void>(decodeChunk(bytes, headers));
    return 0;
}
