#include "platform/desk/settings/CommandWords.h"

#include "platform/unicode.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

constexpr std::size_t kLongestWords = 500; // bytes

constexpr int kMostLines = 3; // the reason often stands above the verdict

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

/// The last lines that say something, on one line.
std::string lastWords(std::string_view text)
{
    std::string words;
    text = trimmed(text);
    for (int lines = 0; lines < kMostLines && !text.empty(); ++lines) {
        const std::size_t start = text.find_last_of("\r\n") + 1;
        const std::string line(trimmed(text.substr(start)).substr(0, kLongestWords));
        words = words.empty() ? line : line + "; " + words;
        text = trimmed(text.substr(0, start));
    }
    words = platform::withValidUtf8(words);
    if (words.ends_with('.'))
        words.pop_back();
    std::replace_if(
        words.begin(), words.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return words;
}

} // namespace

std::string howItEnded(const std::string& program, const platform::Outcome& outcome)
{
    const std::string words = lastWords(outcome.error.empty() ? outcome.output : outcome.error);
    const std::string end = outcome.signal != 0 ? fmt::format("was ended by signal {}", outcome.signal)
                                                : fmt::format("ended with status {}", outcome.status);
    return fmt::format("{} {}{}", program, end, words.empty() ? "" : ": " + words);
}

} // namespace mervo::desk
