#include "core/tools/calendar/UriSyntax.h"

#include <fmt/format.h>
#include <re2/re2.h>

namespace mervo {

namespace {

std::string grammar()
{
    constexpr std::string_view kPlain = R"(A-Za-z0-9._~!$&'()*+,;=\-)"; // unreserved and sub-delims
    constexpr std::string_view kEncoded = "%[0-9A-Fa-f][0-9A-Fa-f]";
    const std::string registered = fmt::format("(?:[{}]|{})*", kPlain, kEncoded);
    const std::string user = fmt::format("(?:[{}:]|{})*", kPlain, kEncoded);
    const std::string literal = fmt::format(R"(\[(?:[0-9A-Fa-f:.]+|[vV][0-9A-Fa-f]+\.[{}:]+)\])", kPlain);
    const std::string authority = fmt::format("(?:{}@)?(?:{}|{})(?::[0-9]*)?", user, literal, registered);
    const std::string segment = fmt::format("(?:[{}:@]|{})", kPlain, kEncoded);
    const std::string withoutColon = fmt::format("(?:[{}@]|{})", kPlain, kEncoded);
    const std::string rooted = fmt::format("//{}(?:/{}*)*|/(?:{}+(?:/{}*)*)?", authority, segment, segment, segment);
    const std::string absolute = fmt::format("[A-Za-z][A-Za-z0-9+.-]*:(?:{}|{}+(?:/{}*)*)?", rooted, segment, segment);
    const std::string relative = fmt::format("(?:{}|{}+(?:/{}*)*)?", rooted, withoutColon, segment);
    const std::string rest = fmt::format("(?:[{}:@/?]|{})*", kPlain, kEncoded);
    return fmt::format(R"((?:{}|{})(?:\?{})?(?:#{})?)", absolute, relative, rest, rest);
}

} // namespace

bool isUriReference(std::string_view text)
{
    static const RE2 pattern(grammar());
    return RE2::FullMatch(re2::StringPiece(text.data(), text.size()), pattern);
}

} // namespace mervo
