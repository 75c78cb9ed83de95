#include "core/imap/ImapText.h"

#include <gtest/gtest.h>

using namespace mervo;

TEST(ImapText, findsTheFolderForAllMail)
{
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"* LIST (\\HasNoChildren \\All) \"/\" \"[Gmail]/Tous les messages\"\r\na2 OK\r\n",
            "[Gmail]/Tous les messages"},
        {"* list (\\all) \"/\" Alles\r\n", "Alles"},
        {"* LIST (\\HasNoChildren) \"/\" \"\\\\All\"\r\n* LIST (\\All) NIL \"x\"\r\n* LIST (\\All) \"/\" \"y\"\r\n",
            "x"},
        {"* LIST (\\Allsorts) \"/\" \"x\"\r\n", std::nullopt}, {"* LSUB (\\All) \"/\" \"x\"\r\n", std::nullopt},
        {"* LIST )\\All( \"/\" x\r\n", std::nullopt}, {"* LIST (\\All)", "(\\All)"}, {"", std::nullopt},
        {"* LIST (\\All) \"/\" \"\"\r\n", ""}};
    for (const auto& [answer, folder] : cases)
        EXPECT_EQ(ImapText::allMailFolder(answer), folder) << answer;
}

TEST(ImapText, readsTheNumbersOfTheFirstSearchLine)
{
    const std::pair<const char*, std::vector<std::uint64_t>> cases[] = {
        {"* SEARCH 2 84 882\r\na4 OK\r\n", {2, 84, 882}}, {"* SEARCH\r\n", {}}, {"a4 OK\r\n", {}},
        {"* 1 EXISTS\r\n* search 7  x 8 -1 99999999999999999999 18446744073709551615\r\n* SEARCH 9\r\n",
            {7, 8, 18446744073709551615U}},
        {"* SEARCHING 5 6", {5, 6}}};
    for (const auto& [answer, hits] : cases)
        EXPECT_EQ(ImapText::searchHits(answer), hits) << answer;
}

TEST(ImapText, findsTheTaggedLineAcrossReads)
{
    const std::string answer = "* OK a1 OK\r\na1x OK\r\na1\r\na1 OK done\r\nrest";
    for (std::size_t size = 0; size <= answer.size(); ++size) {
        std::size_t from = 0;
        const auto line = ImapText::taggedLine(std::string_view(answer).substr(0, size), "a1", from);
        EXPECT_EQ(line.has_value(), size >= answer.size() - 4) << size;
        EXPECT_EQ(line.value_or("a1 OK done"), "a1 OK done");
    }
    EXPECT_TRUE(ImapText::isOk("a1 ok", "a1"));
    EXPECT_FALSE(ImapText::isOk("a1 NO OK", "a1"));
    EXPECT_FALSE(ImapText::isOk("a1", "a1"));
    EXPECT_EQ(ImapText::quoted("a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_FALSE(ImapText::isQuotable(std::string_view("a\0b", 3)));
}
