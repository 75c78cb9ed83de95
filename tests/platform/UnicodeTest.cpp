#include "platform/unicode.h"
#include "tests/support/Growth.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <utf8proc.h>

namespace mervo::platform {
namespace {

std::string utf8(char32_t value)
{
    utf8proc_uint8_t bytes[4];
    const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(value), bytes);
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

struct IllFormed {
    const char* what;
    std::string bytes;
    std::string repaired;
};

TEST(Unicode, illFormedBytesPassThroughOrAreReplaced)
{
    const std::string mark = "\xEF\xBF\xBD";
    const IllFormed cases[]{
        {"a lone continuation byte", "a\x80z", "a" + mark + "z"},
        {"an overlong slash", "\xC0\xAF", mark + mark},
        {"a surrogate", "\xED\xA0\x80", mark + mark + mark},
        {"beyond the last plane", "\xF4\x90\x80\x80", mark + mark + mark + mark},
        {"cut off at the end", "x\xE2\x82", "x" + mark + mark},
        {"cut off before a letter", "\xE2\x82x", mark + mark + "x"},
        {"bytes that never occur", "\xFE\xFF", mark + mark},
    };
    for (const auto& [what, bytes, repaired] : cases) {
        EXPECT_FALSE(isValidUtf8(bytes)) << what;
        EXPECT_EQ(withValidUtf8(bytes), repaired) << what;
        EXPECT_EQ(foldCase(bytes), bytes) << what;
        EXPECT_EQ(countCharacters("\xFF\xFF"), 2U) << what;
    }
    EXPECT_EQ(foldCase("\xFFÉ\x80Ü"), "\xFFé\x80ü") << "what is well-formed between is still folded";
    const std::string nul("a\0É", 4);
    EXPECT_TRUE(isValidUtf8(nul));
    EXPECT_EQ(foldCase(nul), std::string("a\0é", 4));
}

TEST(Unicode, countsCharactersAsAReaderDoes)
{
    const std::pair<const char*, std::size_t> cases[]{{"", 0}, {"abc", 3}, {"e\u0301", 1}, {"a\r\nb", 3}, {"\n\r", 2},
        {"👩‍👩‍👧‍👦", 1}, {"🇫🇷🇩🇪", 2}, {"👍🏽", 1}, {"각", 1}, {"\u1100\u1161\u11A8", 1}, {"नि", 1},
        {"❤️x", 2}, {"日本語", 3}, {"\u0301", 1}};
    for (const auto& [text, count] : cases)
        EXPECT_EQ(countCharacters(text), count) << text;
    EXPECT_EQ(firstCharacterLength("e\u0301x"), 3U);
    EXPECT_EQ(firstCharacterLength("\xFF\u0301"), 1U);
    EXPECT_EQ(firstCharacterLength(""), 0U);
    EXPECT_EQ(countCharacters(test::repeated(20000, "🇫")), 10000U) << "pairs, also in a long run";
}

/// What the library makes of a text, whose time grows with the square of a run of marks.
std::string reference(const std::string& text, int options)
{
    utf8proc_uint8_t* bytes = nullptr;
    const auto length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
        static_cast<utf8proc_ssize_t>(text.size()), &bytes, static_cast<utf8proc_option_t>(options));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(bytes, &std::free);
    return length < 0 ? "none" : std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

void expectReference(const std::string& text)
{
    ASSERT_EQ(foldCase(text), reference(text, UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD)) << text;
    ASSERT_EQ(composed(text), reference(text, UTF8PROC_STABLE | UTF8PROC_COMPOSE)) << text;
    ASSERT_EQ(withoutMarks(text), reference(text, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_STRIPMARK)) << text;
}

TEST(Unicode, normalFormsAreTheLibrarysOwn)
{
    for (char32_t value = 0; value < 0x110000; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF)
            continue;
        const std::string text = utf8(value);
        const CodePoint point = firstCodePoint(text);
        ASSERT_TRUE(point.valid && point.value == value && point.length == text.size()) << text;
        expectReference(text);
        ASSERT_EQ(foldCase(foldCase(text)), foldCase(text)) << text;
    }
    std::mt19937 random(5);
    const std::pair<char32_t, char32_t> ranges[]{{0x20, 0x80}, {0x80, 0x300}, {0x300, 0x370}, {0x370, 0x530},
        {0x590, 0x700}, {0x900, 0xE00}, {0x1100, 0x1200}, {0x1DC0, 0x2030}, {0x20D0, 0x20F1}, {0x3040, 0x3100},
        {0x3400, 0xA000}, {0xAC00, 0xD7A4}, {0x1D100, 0x1D200}, {0x1F600, 0x1F650}};
    for (int round = 0; round < 50'000; ++round) {
        std::string text;
        const bool hasMarks = random() % 4 == 0; // else, mostly, the short way
        for (auto length = 1 + random() % 28; length > 0; --length) {
            const auto& [start, end] = ranges[hasMarks && random() % 2 ? 2 : random() % std::size(ranges)];
            text += utf8(start + random() % (end - start));
        }
        expectReference(text);
    }
}

TEST(Unicode, longRunsOfMarksArePartedAndTakeLinearTime)
{
    const std::string dotBelow = "\u0323", grave = "\u0300", joiner = "\u034F";
    const auto run = [&](std::size_t pairs) {
        return "q" + test::repeated(pairs, grave + dotBelow);
    }; // q composes with neither
    const auto sorted = [&](std::size_t pairs) {
        return test::repeated(pairs, dotBelow) + test::repeated(pairs, grave);
    };
    EXPECT_EQ(foldCase("Q" + run(15).substr(1)), "q" + sorted(15)) << "30 marks are one run";
    EXPECT_EQ(foldCase(run(16)), "q" + sorted(15) + joiner + sorted(1));
    EXPECT_EQ(foldCase(foldCase(run(500))), foldCase(run(500)));
    EXPECT_EQ(withoutMarks(run(500)), "q");

    constexpr std::size_t kPairs = 4'000;
    const auto folding = [&](std::size_t pairs) { EXPECT_FALSE(foldCase(run(pairs)).empty()); };
    const auto composing = [&](std::size_t pairs) { EXPECT_FALSE(composed(run(pairs)).empty()); };
    const auto illFormed = [&](std::size_t pairs) {
        const std::string text = test::repeated(pairs, grave + "\xFF");
        EXPECT_EQ(foldCase(text), text);
    };
    EXPECT_LT(test::growth(kPairs, folding), test::kLinear);
    EXPECT_LT(test::growth(kPairs, composing), test::kLinear);
    EXPECT_LT(test::growth(kPairs, illFormed), test::kLinear);
    EXPECT_LT(test::growth(kPairs, [&](std::size_t pairs) { countCharacters(run(pairs)); }), test::kLinear);
}

} // namespace
} // namespace mervo::platform
