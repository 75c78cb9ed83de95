#pragma once

#include "platform/desk/contentlines/ContentLine.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// A file of content lines: a calendar, an address card, or several of them. What is not changed keeps its bytes, its
/// folds and its line ends too; a line that cannot be read is kept as it stands. A change finds and moves nothing but
/// its own lines, and new ones have the line ends of the file (CRLF where it has none).
///
/// Components are found by BEGIN and END. An END of another name closes what is open within the component that it
/// means; one that means nothing is a line. A component that lies more than kDeepest levels down is not opened: its
/// lines are lines of the one around it. Reading takes time and memory in proportion to the bytes (24 to 48 times as
/// many in the worst case, a file of two-byte lines).
///
///     ContentDocument calendar(bytes);
///     for (auto event : calendar.components(calendar.root(), "VEVENT")) ...
///
/// Nodes stay valid until they are removed. Names of lines and components are compared without regard to case.
class ContentDocument {
public:
    /// A line or a component of this document.
    enum class Node : std::uint32_t {};
    static constexpr int kDeepest = 64;

    explicit ContentDocument(std::string bytes);
    ContentDocument(const ContentDocument&) = delete;
    ContentDocument& operator=(const ContentDocument&) = delete;
    ContentDocument(ContentDocument&&) = default;
    ContentDocument& operator=(ContentDocument&&) = default;
    ~ContentDocument() = default;

    /// The bytes of the file.
    std::string text() const;
    /// False when a BEGIN or an END has no partner, or a component lies too deep.
    bool isBalanced() const { return isBalanced_; }
    std::string_view lineEnd() const { return lineEnd_; }

    /// The document itself, whose components are the calendars or cards.
    Node root() const { return Node{0}; }
    /// The components directly in another one, in their order; all of them without a name.
    std::vector<Node> components(Node within, std::string_view name = {}) const;
    /// The lines directly in a component; all that can be read without a name.
    std::vector<Node> lines(Node within, std::string_view name = {}) const;
    /// The first of them.
    std::optional<Node> line(Node within, std::string_view name) const;
    /// Of a component: as it is written; empty for the root.
    std::string name(Node component) const;
    /// The bytes of a line, or of a component from BEGIN to END.
    std::string bytes(Node node) const;
    /// A line taken apart. Nothing when it cannot be read.
    std::optional<ContentLine> read(Node line) const;
    /// The value of the first such line as a text; nothing where there is none.
    std::optional<std::string> textOf(Node within, std::string_view name) const;
    /// The value of the first such line as it is written; nothing where there is none.
    std::optional<std::string> valueOf(Node within, std::string_view name) const;

    /// Puts another line in the place of one.
    void replace(Node line, const ContentLine& by);
    /// Gives a line another value, as it is to be written (encoded, where its parameters say so); its name and
    /// parameters keep their bytes.
    void setValue(Node line, std::string_view value);
    /// Gives the first such line the value, or adds one; further ones stay.
    void setValue(Node within, std::string_view name, std::string_view value);
    /// Adds a line behind the last one of the component that stands before the components in it.
    Node add(Node within, const ContentLine& line);
    /// Adds a line behind another one.
    Node addBehind(Node line, const ContentLine& added);
    /// Adds whole lines with balanced components, written with any line ends, as the last ones of the component.
    /// Returns the first component among them.
    std::optional<Node> addText(Node within, std::string_view lines);
    /// Likewise, before a component.
    std::optional<Node> insertText(Node before, std::string_view lines);
    /// Takes a line, or a component with all that is in it, away.
    void remove(Node node);
    /// Takes all such lines of the component away.
    void removeLines(Node within, std::string_view name);

private:
    enum class Kind : std::uint8_t { line, unreadable, begin, end };
    struct Entry {
        std::string_view raw; // in texts_, with folds and line end
        std::uint32_t previous = 0, next = 0;
        std::uint32_t last = 0; // of a component: its END; of an END: its BEGIN
        Kind kind = Kind::line;
        bool isOpen = false; // of unreadable lines: the last one would take in whatever came behind it
    };
    class Reader;

    const Entry& entry(Node node) const { return entries_[static_cast<std::uint32_t>(node)]; }
    Entry& entry(Node node) { return entries_[static_cast<std::uint32_t>(node)]; }
    std::string_view keep(std::string text);
    std::uint32_t insert(std::uint32_t before, Entry made);
    template <typename Visit>
    void eachChild(Node within, Visit visit) const;
    bool hasName(const Entry& line, std::string_view name) const;

    std::deque<std::string> texts_; // never moved while a line stands in them
    std::vector<Entry> entries_; // 0: the root's BEGIN, 1: its END, both without bytes; linked in the file's order
    std::string_view lineEnd_ = "\r\n";
    bool isBalanced_ = true;
};

} // namespace mervo::desk
