#include "core/tools/OneLine.h"

#include <algorithm>

namespace mervo {

std::string onOneLine(std::string_view text, std::string_view mark)
{
    constexpr std::string_view kEnds[]{"\r\n", "\n", "\r", "\v", "\f", "\u0085", "\u2028", "\u2029"};
    std::string line;
    while (!text.empty()) {
        const auto* const end = std::ranges::find_if(kEnds, [&](auto each) { return text.starts_with(each); });
        const bool isEnd = end != std::end(kEnds);
        line += isEnd ? mark : text.substr(0, 1);
        text.remove_prefix(isEnd ? end->size() : 1);
    }
    return line;
}

} // namespace mervo
