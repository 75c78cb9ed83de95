#include "platform/desk/notebook/HtmlReader.h"

#include "platform/desk/notebook/NoteError.h"
#include "platform/desk/notebook/TagReader.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

const HtmlEngine& engine()
{
    static const HtmlEngine* const loaded = [] {
        try {
            return platform::load(kHtmlModule)();
        } catch (const std::runtime_error& error) {
            throw NoteError(fmt::format("The reader of HTML notes cannot be loaded: {}.", error.what()));
        }
    }();
    return *loaded;
}

bool isWithinBounds(std::string_view html)
{
    return html.size() <= kLongestParsedHtml
        && static_cast<std::size_t>(std::ranges::count(html, '<')) <= kMostParsedTags;
}

} // namespace

void readHtml(std::string_view html, HtmlDocumentSink& sink)
{
    sink.begin();
    if (isWithinBounds(html)) {
        if (readPlainHtml(html, sink))
            return;
        sink.begin();
        if (engine().read(html, sink))
            return;
    }
    readLeniently(html, sink);
}

} // namespace mervo::desk
