#pragma once

#include <cstdint>
#include <string_view>

namespace mervo::desk {

/// What an element means to a reader of a note.
enum class HtmlTag : std::uint8_t {
    other, ///< nothing: its text stands where it is
    block, ///< stands on lines of its own
    paragraph,
    heading,
    lineBreak,
    rule,
    bold,
    italic,
    struck,
    code,
    link,
    preformatted,
    bulletList,
    numberedList,
    item,
    row,
    cell,
    unseen, ///< no reader sees what is in it: scripts, styles, the head
};

/// By a name in lower case, as in "div".
HtmlTag htmlTag(std::string_view name) noexcept;

struct HtmlElement {
    HtmlTag tag = HtmlTag::other;
    int level = 0; ///< of a heading, 1 to 6
    std::string_view href = {}; ///< of a link; valid during the call
};

/// Gets the elements and texts of a document in their order. Every `open` has its `close`, but for documents that are
/// read leniently (readHtml). Texts are UTF-8 with their entities decoded and come in pieces of any size.
class HtmlSink {
public:
    HtmlSink() = default;
    HtmlSink(const HtmlSink&) = delete;
    HtmlSink& operator=(const HtmlSink&) = delete;
    virtual ~HtmlSink() = default;

    virtual void open(const HtmlElement& element) = 0;
    virtual void close(HtmlTag tag) = 0;
    virtual void text(std::string_view text) = 0;
};

} // namespace mervo::desk
