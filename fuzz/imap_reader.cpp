// What an IMAP server says, taken apart: any bytes, cut at any place.

#include "core/imap/ImapText.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace mervo;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view answer(reinterpret_cast<const char*>(data), size);
    if (const auto folder = ImapText::allMailFolder(answer))
        require(folder->size() <= size && folder->find("\r\n") == std::string::npos);
    require(ImapText::searchHits(answer).size() <= size);

    // The same line is found whether the answer comes at once or in pieces.
    std::size_t whole = 0, grown = 0;
    const auto at = ImapText::taggedLine(answer, "a1", whole);
    const auto half = ImapText::taggedLine(answer.substr(0, size / 2), "a1", grown);
    const auto later = half ? half : ImapText::taggedLine(answer, "a1", grown);
    require(at == later);
    if (at)
        require(at->starts_with("a1 ") && at->find("\r\n") == std::string_view::npos);

    const std::string quoted = ImapText::quoted(answer);
    std::string back;
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i)
        back += quoted[i] == '\\' ? quoted[++i] : quoted[i];
    require(back == answer);
    return 0;
}
