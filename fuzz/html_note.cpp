// The bytes of an HTML note, which any program and any web page may have written: the reader without a parser agrees
// with the parser wherever it accepts a document, and a change keeps what it must.

#include "platform/desk/notebook/HtmlReader.h"
#include "platform/desk/notebook/HtmlText.h"
#include "platform/desk/notebook/NoteContent.h"
#include "platform/desk/notebook/TagReader.h"
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

/// What a sink hears, as one text. White space in front of everything is nobody's.
class Record final : public HtmlSink {
public:
    void open(const HtmlElement& element) override
    {
        unseen_ += element.tag == HtmlTag::unseen ? 1 : 0;
        if (unseen_ == 0 && element.tag != HtmlTag::other)
            add("<" + std::to_string(static_cast<int>(element.tag)) + "," + std::to_string(element.level) + ","
                + std::string(element.href) + ">");
    }
    void close(HtmlTag tag) override
    {
        if (unseen_ == 0 && tag != HtmlTag::other)
            add("</" + std::to_string(static_cast<int>(tag)) + ">");
        unseen_ -= tag == HtmlTag::unseen && unseen_ > 0 ? 1 : 0;
    }
    void text(std::string_view text) override
    {
        if (unseen_ == 0)
            add(text);
    }

    std::string heard;

private:
    void add(std::string_view more)
    {
        if (heard.empty())
            more = more.substr(std::min(more.find_first_not_of(" \t\r\n\f"), more.size()));
        for (const char c : more)
            heard += c == '\r' ? '\n' : c;
    }

    int unseen_ = 0;
};

void requireAgreement(std::string_view html)
{
    Record plain, parsed;
    if (readPlainHtml(html, plain)) {
        require(mervo::platform::load(kHtmlModule)()->read(html, parsed));
        require(plain.heard == parsed.heard);
    }
    Record lenient;
    readLeniently(html, lenient);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    if (file.find("\r\n") == std::string_view::npos)
        requireAgreement(file);
    const NoteContent content = contentOf(NoteKind::html, file);
    require(mervo::platform::isValidUtf8(content.text) && content.text.find('\0') == std::string::npos);
    require(content.name.find('\n') == std::string::npos && content.name.size() <= 1000 + 3);
    require(mervo::platform::isValidUtf8(markdownOfHtml(file)));
    const HtmlParts parts = partsOfHtml(file);
    require(std::string(parts.before).append(parts.body).append(parts.after) == file);
    const std::string more = withMore(NoteKind::html, file, "<div>more</div>");
    require(more.starts_with(std::string(parts.before).append(parts.body)));
    require(withBody(NoteKind::html, file, "new").starts_with(std::string(parts.before) + "new"));
    return 0;
}
