#include "platform/unicode.h"

#include <gtest/gtest.h>
#include <random>

namespace mervo::platform {
namespace {

TEST(Unicode, foldsCaseBeyondAscii)
{
    const std::pair<const char*, const char*> equal[]{{"Plain ASCII 123", "plain ascii 123"}, {"ÉCOLE", "école"},
        {"STRASSE", "straße"}, {"ΣΊΣΥΦΟΣ", "σίσυφος"}, {"ПРИВЕТ", "привет"}, {"E\u0301cole", "École"},
        {"\u212Bngstrom", "ångstrom"}, {"ﬁle", "FILE"}, {"\u212A", "k"}, {"ǅ", "ǆ"}};
    for (const auto& [a, b] : equal)
        EXPECT_EQ(foldCase(a), foldCase(b)) << a << " and " << b;
    const std::pair<const char*, const char*> different[]{
        {"e", "é"}, {"ı", "i"}, {"α", "a"}, {"ss", "s"}, {"o", "ø"}, {"か", "が"}};
    for (const auto& [a, b] : different)
        EXPECT_NE(foldCase(a), foldCase(b)) << a << " and " << b;
}

TEST(Unicode, foldingTwiceIsFoldingOnce)
{
    for (char32_t value = 0x80; value < 0x30000; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF)
            continue;
        std::string text;
        if (value < 0x800) {
            text += static_cast<char>(0xC0 | value >> 6);
        } else if (value < 0x10000) {
            text += static_cast<char>(0xE0 | value >> 12);
            text += static_cast<char>(0x80 | (value >> 6 & 0x3F));
        } else {
            text += static_cast<char>(0xF0 | value >> 18);
            text += static_cast<char>(0x80 | (value >> 12 & 0x3F));
            text += static_cast<char>(0x80 | (value >> 6 & 0x3F));
        }
        text += static_cast<char>(0x80 | (value & 0x3F));
        const CodePoint point = firstCodePoint(text);
        ASSERT_TRUE(point.valid && point.value == value && point.length == text.size())
            << std::hex << static_cast<unsigned>(value);
        const std::string once = foldCase(text);
        ASSERT_EQ(foldCase(once), once) << std::hex << static_cast<unsigned>(value);
    }
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
    const std::string flags = [] {
        std::string text;
        for (int i = 0; i < 20000; ++i)
            text += "🇫";
        return text;
    }();
    EXPECT_EQ(countCharacters(flags), 10000U) << "pairs, also in a long run";
}

TEST(Unicode, foldsTheShortWayAsTheLongWay)
{
    const auto utf8 = [](char32_t value) {
        std::string text;
        if (value < 0x80)
            return std::string(1, static_cast<char>(value));
        if (value < 0x800) {
            text += static_cast<char>(0xC0 | value >> 6);
        } else {
            text += static_cast<char>(0xE0 | value >> 12);
            text += static_cast<char>(0x80 | (value >> 6 & 0x3F));
        }
        text += static_cast<char>(0x80 | (value & 0x3F));
        return text;
    };
    const std::string emoji = "\U0001F600"; // takes the whole text the long way, and is its own folded form
    std::mt19937 random(5);
    const std::pair<char32_t, char32_t> ranges[]{
        {0x20, 0x300}, {0x370, 0x530}, {0x2000, 0x2030}, {0x3040, 0x3100}, {0x3400, 0xA000}};
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        for (int i = 0; i < 5; ++i) {
            const auto& [start, end] = ranges[random() % std::size(ranges)];
            text += utf8(start + random() % (end - start));
        }
        ASSERT_EQ(foldCase(text) + emoji, foldCase(text + emoji)) << text;
    }
}

} // namespace
} // namespace mervo::platform
