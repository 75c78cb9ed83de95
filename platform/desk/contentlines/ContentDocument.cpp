#include "platform/desk/contentlines/ContentDocument.h"

#include "platform/ascii.h"
#include "platform/desk/contentlines/TextValue.h"

#include <algorithm>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    return text;
}

/// True when the parameters of a line say that its value is quoted-printable, which is folded in its own way.
bool isQuotedPrintable(std::string_view line)
{
    const std::size_t end = line.find(':');
    const std::string head = ascii::lowered(line.substr(0, end));
    return end != std::string_view::npos && head.find("quoted-printable") != std::string::npos;
}

/// A physical line's bytes end so: a soft line end of quoted-printable.
bool endsSoftly(std::string_view piece)
{
    return piece.ends_with("=\r\n") || piece.ends_with("=\n");
}

/// A line of quoted-printable whose last piece is followed by nothing in its file: it would take the next line in.
bool goesOn(std::string_view raw)
{
    return (raw.ends_with('=') || raw.ends_with("=\r") || endsSoftly(raw)) && isQuotedPrintable(raw);
}

/// Takes the next line with its folds off the front.
std::string_view takeLine(std::string_view& rest)
{
    const std::string_view all = rest;
    std::size_t end = 0;
    std::optional<bool> isQuoted; // asked once for a line, however many pieces it has
    for (;;) {
        const std::size_t start = end;
        end = std::min(all.find('\n', start), all.size() - 1) + 1;
        if (end >= all.size())
            break;
        if (all[end] == ' ' || all[end] == '\t')
            continue;
        if (!endsSoftly(all.substr(start, end - start)))
            break;
        if (!isQuoted)
            isQuoted = isQuotedPrintable(all.substr(0, end));
        if (!*isQuoted)
            break;
    }
    rest.remove_prefix(end);
    return all.substr(0, end);
}

/// The name of a line as it lies in the file: mostly no fold is in it.
std::string nameOf(std::string_view raw)
{
    const std::size_t end = raw.find_first_of(":;\n");
    if (end != std::string_view::npos && raw[end] != '\n')
        return std::string(contentLineName(raw.substr(0, end + 1)));
    return std::string(contentLineName(unfolded(raw)));
}

} // namespace

/// Splits bytes into lines and finds the components.
class ContentDocument::Reader {
public:
    Reader(ContentDocument& document, std::uint32_t before)
        : document_(document)
        , before_(before)
    {
    }

    void read(std::string_view bytes)
    {
        if (bytes.starts_with(kByteOrderMark)) {
            add(bytes.substr(0, kByteOrderMark.size()), Kind::unreadable);
            bytes.remove_prefix(kByteOrderMark.size());
        }
        while (!bytes.empty())
            take(takeLine(bytes));
        while (!open_.empty())
            closeWithoutEnd();
    }
    std::optional<Node> firstComponent() const { return first_; }

private:
    struct Open {
        std::uint32_t begin;
        std::string name; // in lower case
    };

    std::uint32_t add(std::string_view raw, Kind kind) { return document_.insert(before_, {.raw = raw, .kind = kind}); }

    void take(std::string_view raw)
    {
        const std::string name = nameOf(raw);
        if (name.empty())
            addUnreadable(raw);
        else if (ascii::equalsIgnoringCase(name, "BEGIN"))
            begin(raw);
        else if (ascii::equalsIgnoringCase(name, "END"))
            end(raw);
        else
            add(raw, Kind::line);
    }

    /// Neighbours become one entry, so that a file of empty lines takes no more memory than its bytes.
    void addUnreadable(std::string_view raw)
    {
        std::uint32_t at = document_.entries_[before_].previous;
        const Entry& last = document_.entries_[at];
        if (last.kind == Kind::unreadable && last.raw.data() + last.raw.size() == raw.data())
            document_.entries_[at].raw = {last.raw.data(), last.raw.size() + raw.size()};
        else
            at = add(raw, Kind::unreadable);
        document_.entries_[at].isOpen = goesOn(raw);
    }

    static std::string componentName(std::string_view raw)
    {
        const std::string line = unfolded(raw);
        return ascii::lowered(trimmed(std::string_view(line).substr(line.find(':') + 1)));
    }

    void begin(std::string_view raw)
    {
        if (tooDeep_ > 0 || open_.size() >= kDeepest) {
            ++tooDeep_;
            document_.isBalanced_ = false;
            add(raw, Kind::line);
            return;
        }
        const std::uint32_t at = add(raw, Kind::begin);
        open_.push_back({at, componentName(raw)});
        if (!first_)
            first_ = Node{at};
    }

    void end(std::string_view raw)
    {
        if (tooDeep_ > 0) {
            --tooDeep_;
            add(raw, Kind::line);
            return;
        }
        const std::string name = componentName(raw);
        const auto meant =
            std::find_if(open_.rbegin(), open_.rend(), [&](const Open& open) { return open.name == name; });
        if (meant == open_.rend()) {
            document_.isBalanced_ = false;
            add(raw, Kind::line);
            return;
        }
        for (auto within = meant - open_.rbegin(); within > 0; --within)
            closeWithoutEnd();
        close(raw);
    }

    void closeWithoutEnd()
    {
        document_.isBalanced_ = false;
        close({});
    }

    void close(std::string_view raw)
    {
        const std::uint32_t begin = open_.back().begin, at = add(raw, Kind::end);
        document_.entries_[begin].last = at;
        document_.entries_[at].last = begin;
        open_.pop_back();
    }

    ContentDocument& document_;
    std::uint32_t before_;
    std::vector<Open> open_;
    int tooDeep_ = 0;
    std::optional<Node> first_;
};

ContentDocument::ContentDocument(std::string bytes)
{
    entries_.push_back({.raw = {}, .next = 1, .last = 1, .kind = Kind::begin});
    entries_.push_back({.raw = {}, .kind = Kind::end});
    const std::string_view kept = keep(std::move(bytes));
    const std::size_t end = kept.find('\n');
    if (end != std::string_view::npos)
        lineEnd_ = end > 0 && kept[end - 1] == '\r' ? "\r\n" : "\n";
    Reader(*this, 1).read(kept);
}

std::string_view ContentDocument::keep(std::string text)
{
    return texts_.emplace_back(std::move(text));
}

std::uint32_t ContentDocument::insert(std::uint32_t before, Entry made)
{
    const auto at = static_cast<std::uint32_t>(entries_.size());
    made.next = before;
    made.previous = entries_[before].previous;
    entries_[made.previous].next = at;
    entries_[before].previous = at;
    entries_.push_back(made);
    return at;
}

std::string ContentDocument::text() const
{
    std::string result;
    const Entry* last = nullptr;
    for (std::uint32_t at = 0; at != 1; at = entries_[at].next) {
        const Entry& entry = entries_[at];
        if (entry.raw.empty())
            continue;
        if (last != nullptr && last->raw != kByteOrderMark) {
            const bool isOpen = last->kind == Kind::unreadable ? last->isOpen : goesOn(last->raw);
            result += last->raw.ends_with('\n') ? "" : lineEnd_; // it was the last line of the file
            result += isOpen ? lineEnd_ : ""; // an empty line keeps this one apart
        }
        result += entry.raw;
        last = &entry;
    }
    return result;
}

/// Calls with each line and component directly within, until it returns false.
template <typename Visit>
void ContentDocument::eachChild(Node within, Visit visit) const
{
    const std::uint32_t end = entry(within).last;
    for (std::uint32_t at = entry(within).next; at != end;) {
        const Entry& child = entries_[at];
        if (!visit(Node{at}, child))
            return;
        at = child.kind == Kind::begin ? entries_[child.last].next : child.next;
    }
}

bool ContentDocument::hasName(const Entry& line, std::string_view name) const
{
    if (line.kind != Kind::line)
        return false;
    const bool isPlain =
        line.raw.size() > name.size() && (line.raw[name.size()] == ':' || line.raw[name.size()] == ';');
    if (isPlain && ascii::equalsIgnoringCase(line.raw.substr(0, name.size()), name))
        return true;
    return ascii::equalsIgnoringCase(nameOf(line.raw), name);
}

std::vector<ContentDocument::Node> ContentDocument::components(Node within, std::string_view wanted) const
{
    std::vector<Node> found;
    eachChild(within, [&](Node node, const Entry& child) {
        if (child.kind == Kind::begin && (wanted.empty() || ascii::equalsIgnoringCase(name(node), wanted)))
            found.push_back(node);
        return true;
    });
    return found;
}

std::vector<ContentDocument::Node> ContentDocument::lines(Node within, std::string_view wanted) const
{
    std::vector<Node> found;
    eachChild(within, [&](Node node, const Entry& child) {
        if (wanted.empty() ? child.kind == Kind::line : hasName(child, wanted))
            found.push_back(node);
        return true;
    });
    return found;
}

std::optional<ContentDocument::Node> ContentDocument::line(Node within, std::string_view wanted) const
{
    std::optional<Node> found;
    eachChild(within, [&](Node node, const Entry& child) {
        if (hasName(child, wanted))
            found = node;
        return !found;
    });
    return found;
}

std::string ContentDocument::name(Node component) const
{
    const std::string line = unfolded(entry(component).raw);
    return line.empty() ? line : std::string(trimmed(std::string_view(line).substr(line.find(':') + 1)));
}

std::string ContentDocument::bytes(Node node) const
{
    std::string result(entry(node).raw);
    if (entry(node).kind == Kind::begin) {
        for (std::uint32_t at = static_cast<std::uint32_t>(node); at != entry(node).last;) {
            at = entries_[at].next;
            result += entries_[at].raw;
        }
    }
    return result;
}

std::optional<ContentLine> ContentDocument::read(Node line) const
{
    return readContentLine(unfolded(entry(line).raw));
}

std::optional<std::string> ContentDocument::valueOf(Node within, std::string_view name) const
{
    const auto found = line(within, name);
    auto parts = found ? read(*found) : std::nullopt;
    return parts ? std::optional(std::move(parts->value)) : std::nullopt;
}

std::optional<std::string> ContentDocument::textOf(Node within, std::string_view name) const
{
    const auto value = valueOf(within, name);
    return value ? std::optional(unescapedText(*value)) : std::nullopt;
}

void ContentDocument::replace(Node line, const ContentLine& by)
{
    entry(line).raw = keep(folded(writeContentLine(by), lineEnd_));
}

void ContentDocument::setValue(Node line, std::string_view value)
{
    const std::string whole = unfolded(entry(line).raw);
    const auto parts = readContentLine(whole);
    if (!parts || parts->value == value)
        return;
    const std::string_view head = std::string_view(whole).substr(0, whole.size() - parts->value.size());
    entry(line).raw = keep(folded(std::string(head) + withoutControls(value), lineEnd_));
}

void ContentDocument::setValue(Node within, std::string_view name, std::string_view value)
{
    if (const auto found = line(within, name))
        setValue(*found, value);
    else
        add(within, {.name = std::string(name), .value = std::string(value)});
}

ContentDocument::Node ContentDocument::add(Node within, const ContentLine& line)
{
    std::uint32_t behind = static_cast<std::uint32_t>(within);
    eachChild(within, [&](Node node, const Entry& child) {
        // Of what cannot be read, a mark or a blank at the front of the file would end up within another line.
        const bool isFront = child.kind == Kind::unreadable && behind == static_cast<std::uint32_t>(within);
        if (child.kind == Kind::line || isFront)
            behind = static_cast<std::uint32_t>(node);
        return child.kind != Kind::begin;
    });
    return addBehind(Node{behind}, line);
}

ContentDocument::Node ContentDocument::addBehind(Node line, const ContentLine& added)
{
    const std::string_view raw = keep(folded(writeContentLine(added), lineEnd_));
    return Node{insert(entry(line).next, {.raw = raw, .kind = Kind::line})};
}

std::optional<ContentDocument::Node> ContentDocument::addText(Node within, std::string_view lines)
{
    return insertText(Node{entry(within).last}, lines);
}

std::optional<ContentDocument::Node> ContentDocument::insertText(Node before, std::string_view lines)
{
    std::string text;
    for (std::size_t from = 0; from < lines.size();) {
        const std::size_t feed = std::min(lines.find('\n', from), lines.size());
        std::size_t end = feed;
        if (end > from && lines[end - 1] == '\r')
            --end;
        text.append(lines.substr(from, end - from)).append(lineEnd_);
        from = feed + 1;
    }
    Reader reader(*this, static_cast<std::uint32_t>(before));
    reader.read(keep(std::move(text)));
    return reader.firstComponent();
}

void ContentDocument::remove(Node node)
{
    const Entry& gone = entry(node);
    const std::uint32_t after = gone.kind == Kind::begin ? entries_[gone.last].next : gone.next;
    entries_[gone.previous].next = after;
    entries_[after].previous = gone.previous;
}

void ContentDocument::removeLines(Node within, std::string_view name)
{
    for (const Node found : lines(within, name))
        remove(found);
}

} // namespace mervo::desk
