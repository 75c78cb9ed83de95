#include "platform/desk/notebook/HtmlSink.h"

#include <algorithm>
#include <iterator>

namespace mervo::desk {
namespace {

struct Named {
    std::string_view name;
    HtmlTag tag;
};

/// Sorted by name.
constexpr Named kTags[] = {
    {"a", HtmlTag::link},
    {"address", HtmlTag::block},
    {"article", HtmlTag::block},
    {"aside", HtmlTag::block},
    {"b", HtmlTag::bold},
    {"blockquote", HtmlTag::block},
    {"br", HtmlTag::lineBreak},
    {"caption", HtmlTag::block},
    {"code", HtmlTag::code},
    {"dd", HtmlTag::block},
    {"del", HtmlTag::struck},
    {"details", HtmlTag::block},
    {"div", HtmlTag::block},
    {"dl", HtmlTag::block},
    {"dt", HtmlTag::block},
    {"em", HtmlTag::italic},
    {"fieldset", HtmlTag::block},
    {"figcaption", HtmlTag::block},
    {"figure", HtmlTag::block},
    {"footer", HtmlTag::block},
    {"form", HtmlTag::block},
    {"h1", HtmlTag::heading},
    {"h2", HtmlTag::heading},
    {"h3", HtmlTag::heading},
    {"h4", HtmlTag::heading},
    {"h5", HtmlTag::heading},
    {"h6", HtmlTag::heading},
    {"head", HtmlTag::unseen},
    {"header", HtmlTag::block},
    {"hr", HtmlTag::rule},
    {"i", HtmlTag::italic},
    {"iframe", HtmlTag::unseen},
    {"li", HtmlTag::item},
    {"main", HtmlTag::block},
    {"nav", HtmlTag::block},
    {"noembed", HtmlTag::unseen},
    {"noframes", HtmlTag::unseen},
    {"ol", HtmlTag::numberedList},
    {"p", HtmlTag::paragraph},
    {"pre", HtmlTag::preformatted},
    {"s", HtmlTag::struck},
    {"script", HtmlTag::unseen},
    {"section", HtmlTag::block},
    {"strike", HtmlTag::struck},
    {"strong", HtmlTag::bold},
    {"style", HtmlTag::unseen},
    {"summary", HtmlTag::block},
    {"table", HtmlTag::block},
    {"td", HtmlTag::cell},
    {"template", HtmlTag::unseen},
    {"th", HtmlTag::cell},
    {"title", HtmlTag::unseen},
    {"tr", HtmlTag::row},
    {"tt", HtmlTag::code},
    {"ul", HtmlTag::bulletList},
};

} // namespace

HtmlTag htmlTag(std::string_view name) noexcept
{
    const auto* const found =
        std::ranges::lower_bound(kTags, name, std::less<>(), [](const Named& each) { return each.name; });
    return found != std::end(kTags) && found->name == name ? found->tag : HtmlTag::other;
}

} // namespace mervo::desk
