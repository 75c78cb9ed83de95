#include "frontends/mcp/LineReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using mervo::mcp::LineReader;

namespace {

constexpr std::size_t kLongest = 8;

std::vector<std::string> linesOf(const std::vector<std::string_view>& pieces)
{
    std::vector<std::string> lines;
    LineReader reader({.line = [&](std::string_view line) { lines.emplace_back(line); },
                          .tooLong = [&] { lines.emplace_back("(too long)"); }},
        kLongest);
    for (const std::string_view piece : pieces)
        reader.feed(piece);
    reader.finish();
    return lines;
}

} // namespace

TEST(LineReader, givesTheSameLinesHoweverTheStreamIsCut)
{
    const std::string stream = "\xEF\xBB\xBF"
                               "one\n\r\n two\r\n  \t\n12345678\n123456789\nx\n1234567890123456789\n"
                               "\xEF\xBB\xBF\n\nlast";
    EXPECT_EQ(linesOf({"123456789"}), std::vector<std::string>{"(too long)"});
    const std::vector<std::string> expected{"one", " two", "12345678", "(too long)", "x", "(too long)", "last"};
    EXPECT_EQ(linesOf({stream}), expected);
    for (std::size_t first = 0; first <= stream.size(); ++first) {
        for (std::size_t second = first; second <= stream.size(); ++second) {
            const std::string_view view = stream;
            ASSERT_EQ(
                linesOf({view.substr(0, first), view.substr(first, second - first), view.substr(second)}), expected)
                << "cut at " << first << " and " << second;
        }
    }
}
