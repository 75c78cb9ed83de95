#include "core/foundation/Text.h"

#include "platform/unicode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <utf8proc.h>

namespace mervo {
namespace {

TEST(Text, comparesIgnoringCase)
{
    struct Case {
        const char* text;
        const char* part;
        bool contains;
        bool equals;
    };
    const Case cases[]{{"WORK", "work", true, true}, {"Work2", "work", true, false}, {"", "", true, true},
        {"x", "", true, false}, {"", "x", false, false}, {"ÉCOLE", "école", true, true},
        {"rue de l'E\u0301cole", "ÉCOLE", true, false}, {"Straße", "STRASSE", true, true},
        {"resumé", "resume", false, false}, {"aab", "AB", true, false}, {"Ünal", "ü", true, false},
        {"\u212Am", "km", true, true}, {"\xFFWork", "work", true, false}, {"ab", "abc", false, false}};
    for (const auto& [text, part, contains, equals] : cases) {
        EXPECT_EQ(Text::containsIgnoringCase(text, part), contains) << text << " / " << part;
        EXPECT_EQ(Text::equalsIgnoringCase(text, part), equals) << text << " / " << part;
    }
}

TEST(Text, trimsWhiteSpaceOfEveryKind)
{
    const std::pair<const char*, const char*> cases[]{{"", ""}, {" \t\r\n\v\f", ""}, {"  a b \n", "a b"},
        {"\u00A0\u3000x\u2028\u2029\u0085", "x"}, {"\u200Bx", "\u200Bx"}, {"é ", "é"}, {" \xA0 ", "\xA0"},
        {"\xE2\x80 ", "\xE2\x80"}, {"x\u2003", "x"}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Text::trimmed(text), expected) << text;
}

TEST(Text, cutsAtCharacters)
{
    const std::pair<std::string, std::string> cases[]{{"", ""}, {"abc", "abc"}, {"abcd", "abc..."},
        {"e\u0301e\u0301e\u0301", "e\u0301e\u0301e\u0301"},
        {"ab👩‍👩‍👧‍👦d", "ab👩‍👩‍👧‍👦..."}, {"\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF..."}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Text::cut(text, 3), expected);
    EXPECT_EQ(Text::cut("x", 0), "...");
}

TEST(Text, whatIsHiddenFollowsUnicodesProperties)
{
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        const auto* property = utf8proc_get_property(static_cast<utf8proc_int32_t>(point));
        const auto category = static_cast<utf8proc_category_t>(property->category);
        const bool hidden = category == UTF8PROC_CATEGORY_CC || category == UTF8PROC_CATEGORY_ZL
            || category == UTF8PROC_CATEGORY_ZP || property->ignorable || (point >= 0xFFF9 && point <= 0xFFFB);
        if (category != UTF8PROC_CATEGORY_CN) {
            ASSERT_EQ(Text::isHidden(point), hidden) << std::hex << static_cast<unsigned>(point);
        }
    }
}

TEST(Text, makesHiddenCharactersVisible)
{
    const std::pair<std::string, const char*> cases[]{{"plain é 👍 日本", "plain é 👍 日本"},
        {std::string("a\0b", 3), "a<U+0000>b"}, {"\x1B[2J", "<U+001B>[2J"}, {"a\rb", "a<U+000D>b"},
        {"\u2028\u202E\u202F", "<U+2028><U+202E>\u202F"}, {"invoice\u202Egpj.exe", "invoice<U+202E>gpj.exe"},
        {"\U000E0041\U000E0FFF", "<U+E0041><U+E0FFF>"}, {"a\xFFz\xC3", "a<0xFF>z<0xC3>"}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(Text::visible(text), expected);
        EXPECT_EQ(Text::visibleLine(text), expected);
    }
    EXPECT_EQ(Text::visible("a\n\tb"), "a\n\tb");
    EXPECT_EQ(Text::visibleLine("a\n\tb"), "a<U+000A><U+0009>b");
    for (unsigned byte = 0; byte < 256; ++byte)
        EXPECT_TRUE(platform::isValidUtf8(Text::visible(std::string(1, static_cast<char>(byte)))));
}

TEST(Text, splitsAndJoins)
{
    EXPECT_EQ(Text::split("", ','), (std::vector<std::string>{""}));
    EXPECT_EQ(Text::split(",a,,b,", ','), (std::vector<std::string>{"", "a", "", "b", ""}));
    EXPECT_EQ(Text::join({}, ", "), "");
    EXPECT_EQ(Text::join({"", "a", "a"}, ", "), ", a, a");
}

TEST(Text, idsAreRandomUuids)
{
    const char* const form = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    std::set<std::string> seen;
    for (int i = 0; i < 2000; ++i) {
        const std::string id = Text::newUuid();
        EXPECT_THAT(id, testing::MatchesRegex(form));
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 2000U);
    EXPECT_THAT(Text::newShortId(), testing::MatchesRegex("[0-9A-F]{8}"));
}

} // namespace
} // namespace mervo
