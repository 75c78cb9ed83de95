// The bytes of a note of Markdown or plain text, and HTML that goes into one.

#include "platform/desk/notebook/HtmlText.h"
#include "platform/desk/notebook/NoteContent.h"
#include "platform/desk/notebook/TextNote.h"
#include "platform/unicode.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace mervo::desk;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void requireFileName(std::string_view name)
{
    require(!name.empty() && name.size() <= 120 && !name.starts_with('.'));
    require(name.find_first_of(std::string_view("/\0\n\\:", 5)) == std::string_view::npos);
    require(mervo::platform::isValidUtf8(name));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    for (const NoteKind kind : {NoteKind::markdown, NoteKind::text}) {
        const NoteContent content = contentOf(kind, file);
        require(mervo::platform::isValidUtf8(content.text) && content.text.find('\0') == std::string::npos);
        require(mervo::platform::isValidUtf8(content.name) && content.name.find('\n') == std::string::npos);
        requireFileName(fileNameOfTitle(content.name));
        requireFileName(fileNameOfTitle(file));
        const std::string body = bodyOf(kind, file);
        require(textOfHtml(body).size() <= content.text.size());
        const std::string more = withMore(kind, file, "<div>more</div>");
        require(more.starts_with(file) && more.find("more", file.size()) != std::string::npos);
        const TextParts parts = kind == NoteKind::markdown ? partsOfMarkdown(file) : partsOfPlainText(file);
        require(std::string(parts.before).append(parts.text) == file);
        require(withBody(kind, file, body).starts_with(parts.before));
    }
    return 0;
}
