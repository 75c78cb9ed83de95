#pragma once

#include <QString>

#include <cstddef>
#include <string_view>

/// Makes texts from outside safe to show: plain, invisible characters made visible, long texts cut.
namespace mervo::ShownText {

inline constexpr std::size_t kArgumentLimit = 2'000; ///< characters
inline constexpr std::size_t kLineLimit = 500;
inline constexpr std::size_t kBlockLimit = 20'000;

/// A text cut at a limit, and the number of characters left out.
struct Cut {
    QString shown;
    std::size_t leftOut = 0;
};
Cut cut(std::string_view text, std::size_t limit);

/// The whole text; line feeds and tabs stay.
QString whole(std::string_view text);

/// One line (line ends show as U+21B5), and several, with "... (<n> more characters)" behind what was cut.
QString line(std::string_view text, std::size_t limit = kLineLimit);
QString block(std::string_view text, std::size_t limit = kBlockLimit);

} // namespace mervo::ShownText
