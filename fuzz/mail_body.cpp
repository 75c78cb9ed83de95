// The text of a message made fit for an agent: markup taken out, history and signature cut, length bounded.

#include "core/tools/mail/MailBody.h"
#include "platform/unicode.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace mervo;
    const std::string text = platform::withValidUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    const std::string cleaned = MailBody::clean(text);
    const std::size_t note = sizeof "\n\n[truncated: 18446744073709551615 more bytes]";
    if (!platform::isValidUtf8(cleaned) || cleaned.size() > MailBody::byteCap + note)
        std::abort();
    return 0;
}
