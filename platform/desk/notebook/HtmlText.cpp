#include "platform/desk/notebook/HtmlText.h"

#include "platform/ascii.h"
#include "platform/desk/notebook/HtmlReader.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <vector>

namespace mervo::desk {
namespace {

constexpr std::size_t kDeepestIndent = 20; // lists within each other whose items are still moved to the right

/// The lines that a reader sees: white space collapsed, blocks and items on lines of their own.
class TextSink : public HtmlDocumentSink {
public:
    void begin() override
    {
        out_.clear();
        lists_.clear();
        line_ = Line::empty;
        unseen_ = preformatted_ = 0;
        isBlankDue_ = false;
    }

    void open(const HtmlElement& element) override
    {
        switch (element.tag) {
        case HtmlTag::unseen:
            ++unseen_;
            break;
        case HtmlTag::lineBreak:
            endLine();
            break;
        case HtmlTag::bulletList:
        case HtmlTag::numberedList:
            block();
            lists_.push_back({element.tag == HtmlTag::numberedList, 0});
            break;
        case HtmlTag::item:
            beginItem();
            break;
        case HtmlTag::cell:
            if (line_ == Line::text)
                put("\t");
            break;
        case HtmlTag::preformatted:
            block();
            ++preformatted_;
            break;
        default:
            if (isBlock(element.tag))
                block();
        }
    }

    void close(HtmlTag tag) override
    {
        switch (tag) {
        case HtmlTag::unseen:
            unseen_ -= unseen_ > 0 ? 1 : 0;
            break;
        case HtmlTag::bulletList:
        case HtmlTag::numberedList:
            block();
            if (!lists_.empty())
                lists_.pop_back();
            break;
        case HtmlTag::item:
            if (line_ != Line::empty)
                endLine();
            break;
        case HtmlTag::preformatted:
            block();
            preformatted_ -= preformatted_ > 0 ? 1 : 0;
            break;
        default:
            if (isBlock(tag))
                block();
        }
    }

    void text(std::string_view text) override
    {
        if (unseen_ > 0)
            return;
        if (preformatted_ > 0) {
            asItStands(text);
        } else {
            collapsed(text);
        }
    }

    std::string taken()
    {
        out_.resize(out_.find_last_not_of(" \n\t") + 1);
        return platform::withValidUtf8(out_);
    }

protected:
    enum class Line : std::uint8_t { empty, marker, text };

    static bool isBlock(HtmlTag tag)
    {
        return tag == HtmlTag::block || tag == HtmlTag::paragraph || tag == HtmlTag::heading || tag == HtmlTag::rule
            || tag == HtmlTag::row;
    }

    /// Ends a line that has a text; the marker of an item waits for its own.
    void block()
    {
        isBlankDue_ = false;
        if (line_ == Line::text)
            endLine();
    }

    void endLine()
    {
        if (unseen_ > 0)
            return;
        isBlankDue_ = false;
        line_ = Line::empty;
        out_ += '\n';
    }

    /// Text on the current line, behind the blank that is due.
    void put(std::string_view text)
    {
        if (unseen_ > 0)
            return;
        if (isBlankDue_)
            out_ += ' ';
        isBlankDue_ = false;
        line_ = Line::text;
        out_ += text;
    }

    virtual std::string_view bullet() const { return "• "; }
    virtual std::size_t indent() const { return 2; }

    bool isUnseen() const { return unseen_ > 0; }
    bool isInPreformatted() const { return preformatted_ > 0; }
    std::string& out() { return out_; }

private:
    struct OpenList {
        bool isNumbered;
        std::int64_t items;
    };

    void beginItem()
    {
        if (line_ != Line::empty)
            endLine();
        if (unseen_ > 0)
            return;
        const std::size_t depth = lists_.empty() ? 0 : std::min(lists_.size() - 1, kDeepestIndent);
        out_.append(indent() * depth, ' ');
        if (!lists_.empty() && lists_.back().isNumbered) {
            out_ += fmt::format("{}. ", ++lists_.back().items);
        } else {
            out_ += bullet();
        }
        line_ = Line::marker;
        isBlankDue_ = false;
    }

    void collapsed(std::string_view text)
    {
        std::size_t at = 0;
        while (at < text.size()) {
            if (isBlank(text[at])) {
                isBlankDue_ = line_ == Line::text;
                ++at;
                continue;
            }
            const std::size_t start = at;
            while (at < text.size() && !isBlank(text[at]))
                ++at;
            putWord(text.substr(start, at - start));
        }
    }

    static bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }

    /// A no-break space is a blank to a reader, and to a search.
    void putWord(std::string_view word)
    {
        constexpr std::string_view kNoBreak = "\u00a0";
        for (std::size_t at = word.find(kNoBreak); at != std::string_view::npos; at = word.find(kNoBreak)) {
            put(word.substr(0, at));
            put(" ");
            word.remove_prefix(at + kNoBreak.size());
        }
        if (!word.empty())
            put(word);
    }

    void asItStands(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            if (end > 0)
                put(text.substr(0, end));
            if (end < text.size())
                endLine();
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    }

    std::string out_;
    std::vector<OpenList> lists_;
    Line line_ = Line::empty;
    std::size_t unseen_ = 0, preformatted_ = 0;
    bool isBlankDue_ = false;
};

/// The same lines with the marks of Markdown.
class MarkdownSink final : public TextSink {
public:
    void begin() override
    {
        TextSink::begin();
        links_.clear();
    }

    void open(const HtmlElement& element) override
    {
        if (element.tag == HtmlTag::paragraph || element.tag == HtmlTag::heading || element.tag == HtmlTag::rule)
            blankLine();
        TextSink::open(element);
        if (isUnseen())
            return;
        if (element.tag == HtmlTag::heading)
            out().append(static_cast<std::size_t>(element.level), '#').append(" ");
        if (element.tag == HtmlTag::rule)
            put("---");
        if (element.tag == HtmlTag::preformatted) {
            put("```");
            endLine();
        }
        if (element.tag == HtmlTag::link)
            beginLink(element.href);
        beginMark(element.tag);
    }

    void close(HtmlTag tag) override
    {
        if (!isUnseen()) {
            endMark(tag);
            if (tag == HtmlTag::link)
                endLink();
            if (tag == HtmlTag::preformatted) {
                block();
                put("```");
            }
        }
        TextSink::close(tag);
        if (tag == HtmlTag::paragraph || tag == HtmlTag::heading || tag == HtmlTag::rule)
            blankLine();
    }

private:
    std::string_view bullet() const override { return "- "; }
    std::size_t indent() const override { return 4; }

    static std::string_view mark(HtmlTag tag)
    {
        switch (tag) {
        case HtmlTag::bold:
            return "**";
        case HtmlTag::italic:
            return "*";
        case HtmlTag::struck:
            return "~~";
        case HtmlTag::code:
            return "`";
        default:
            return "";
        }
    }

    void blankLine()
    {
        block();
        if (!out().empty() && !out().ends_with("\n\n"))
            out() += '\n';
    }

    void beginMark(HtmlTag tag)
    {
        if (const auto found = mark(tag); !found.empty() && !isInPreformatted()) {
            put(found);
            opened_ = out().size();
        }
    }

    /// A mark around nothing is taken back. One never ends behind a blank, which waits for the next word.
    void endMark(HtmlTag tag)
    {
        const std::string_view found = mark(tag);
        if (found.empty() || isInPreformatted())
            return;
        if (opened_ == out().size() && out().ends_with(found)) {
            out().resize(out().size() - found.size());
        } else {
            out() += found;
        }
        opened_ = 0;
    }

    void beginLink(std::string_view href)
    {
        links_.emplace_back(href);
        if (!href.empty())
            put("[");
    }

    void endLink()
    {
        if (links_.empty())
            return;
        const std::string href = std::move(links_.back());
        links_.pop_back();
        if (href.empty())
            return;
        const bool isPlain = href.find_first_of(" ()<>\n\r\t") == std::string::npos;
        out() += isPlain ? fmt::format("]({})", href) : fmt::format("](<{}>)", inAngles(href));
    }

    static std::string inAngles(std::string_view href)
    {
        std::string encoded;
        for (const char c : href) {
            if (std::string_view("<>\n\r\t").find(c) == std::string_view::npos) {
                encoded += c;
            } else {
                encoded += fmt::format("%{:02X}", static_cast<unsigned char>(c));
            }
        }
        return encoded;
    }

    std::vector<std::string> links_;
    std::size_t opened_ = 0; // the end of the text when a mark was put last
};

template <typename Sink>
std::string readInto(std::string_view html)
{
    Sink sink;
    readHtml(html, sink);
    return sink.taken();
}

/// The first place of a tag, in any letter case, whose name ends there; npos when there is none.
std::size_t findTag(std::string_view file, std::string_view tag)
{
    const auto isHere = [&](std::size_t at) {
        const std::string_view behind = file.substr(std::min(at + tag.size(), file.size()), 1);
        return platform::ascii::equalsIgnoringCase(file.substr(at, tag.size()), tag)
            && (behind.empty() || std::string_view(" \t\n\r\f>/").find(behind[0]) != std::string_view::npos);
    };
    std::size_t at = file.find('<');
    while (at != std::string_view::npos && !isHere(at))
        at = file.find('<', at + 1);
    return at;
}

} // namespace

std::string textOfHtml(std::string_view html)
{
    return readInto<TextSink>(html);
}

std::string markdownOfHtml(std::string_view html)
{
    return readInto<MarkdownSink>(html);
}

std::string htmlOfText(std::string_view text)
{
    std::string html;
    html.reserve(text.size() + text.size() / 8);
    for (const char c : text) {
        switch (c) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '\n':
            html += "<br>";
            break;
        default:
            html += c;
        }
    }
    return html;
}

HtmlParts partsOfHtml(std::string_view file)
{
    HtmlParts parts;
    const std::size_t tag = findTag(file, "<body");
    const std::size_t start = tag == std::string_view::npos ? tag : file.find('>', tag);
    if (start != std::string_view::npos) {
        parts.before = file.substr(0, start + 1);
    } else if (file.starts_with(kHtmlPreamble)) {
        parts.before = kHtmlPreamble;
    }
    std::string_view rest = file.substr(parts.before.size());
    std::size_t end = start == std::string_view::npos ? rest.size() : findTag(rest, "</body");
    end = std::min(end, rest.size());
    while (end > 0 && rest[end - 1] == '\n')
        --end;
    parts.body = rest.substr(0, end);
    parts.after = rest.substr(end);
    return parts;
}

} // namespace mervo::desk
