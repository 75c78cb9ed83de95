// Any bytes as a calendar or an address card: they are given back unchanged; a value that is set is read again, and
// taking its line away leaves what was there.

#include "platform/ascii.h"
#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/contentlines/TextValue.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace mervo::desk;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void visit(ContentDocument& document, ContentDocument::Node within, int depth)
{
    require(depth <= ContentDocument::kDeepest);
    for (const auto line : document.lines(within)) {
        const auto parts = document.read(line);
        if (parts)
            require(readContentLine(unfolded(folded(writeContentLine(*parts), "\r\n"))).has_value());
    }
    for (const auto component : document.components(within))
        visit(document, component, depth + 1);
}

/// False for a line that cannot be read, and for a value that is not encoded as the line says.
bool canTake(const ContentDocument& document, ContentDocument::Node line, const std::string& value)
{
    const bool isQuoted =
        mervo::platform::ascii::lowered(document.bytes(line)).find("quoted-printable") != std::string::npos;
    return document.read(line) && !(isQuoted && value.ends_with('='));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    ContentDocument document(bytes);
    require(document.text() == bytes);
    visit(document, document.root(), 0);
    require(unescapedText(escapedText(withoutControls(bytes))) == withoutControls(bytes));

    const auto components = document.components(document.root());
    const auto within = components.empty() ? document.root() : components.front();
    const std::string value = withoutControls(bytes);
    if (const auto line = document.line(within, "X-NEW"); line && !canTake(document, *line, value))
        return 0;
    document.setValue(within, "X-NEW", value);
    const ContentDocument again(document.text());
    if (document.isBalanced()) {
        const auto there = again.components(again.root());
        require(again.valueOf(there.empty() ? again.root() : there.front(), "x-new") == value);
    }
    document.removeLines(within, "X-NEW");
    require(!document.line(within, "X-NEW"));
    return 0;
}
