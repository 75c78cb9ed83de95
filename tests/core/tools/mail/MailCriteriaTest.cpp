#include "core/tools/mail/MailCriteria.h"
#include "core/catalogue/Catalogue.h"
#include "core/tools/mail/MailCount.h"

#include <gmock/gmock.h>

namespace mervo {
namespace {

using testing::ElementsAre;

TEST(MailCriteria, turnsMegabytesIntoBytes)
{
    const struct {
        const char* given;
        const char* item;
    } cases[] = {
        {"", ""},
        {"0", "0"},
        {"1", "1048576"},
        {"1.5", "1572864"},
        {"0.1", "104857"},
        {".5", "524288"},
        {"5.", "5242880"},
        {"1e3", "1048576000"},
        {"+2", "2097152"},
        {"-1", "-1048576"},
        {"1e-9", "0"},
        {"8796093022207", "9223372036853727232"}, // the last that fits 64 bits
        {"8796093022208", "8796093022208"},
        {"1e300", "1e300"},
        {"1e999", "1e999"},
        {"abc", "abc"},
        {" 1", " 1"},
        {"1 ", "1 "},
        {"1,5", "1,5"},
        {"1MB", "1MB"},
        {"0x10", "0x10"},
        {"inf", "inf"},
        {"nan", "nan"},
        {"1.5.2", "1.5.2"},
        {"e", "e"},
        {"+-1", "+-1"},
        {"--1", "--1"},
        {"+", "+"},
    };
    for (const auto& [given, item] : cases)
        EXPECT_EQ(MailCriteria::bytesOfMegabytes(given), item) << given;
}

TEST(MailCriteria, standInTheirPlacesOnTheArgumentList)
{
    const Args all{{"account", "A\"c"}, {"mailbox", "M\\b"}, {"from", "f\nr"}, {"to", "t"}, {"before", "b"},
        {"after", "a"}, {"olderThan", "o"}, {"minSize", "1"}, {"maxSize", "2"}, {"subject", "s"},
        {"subjectContains", "sc"}, {"status", "st"}, {"hasAttachment", "h"}, {"limit", "l"}, {"unknown", "u"}};
    EXPECT_THAT(MailCriteria::argv(all),
        ElementsAre("A\"c", "M\\b", "f\nr", "t", "b", "a", "o", "1048576", "2097152", "s", "sc", "st", "h"));
    const struct {
        const char* tool;
        Args args;
        std::vector<std::string> argv;
    } cases[] = {
        {"mail.audit", {{"account", "A"}, {"mailbox", "M"}},
            {"A", "M", "", "", "", "", "", "", "", "", "", "", "", "0"}},
        {"mail.audit", {{"account", "A"}, {"mailbox", "M"}, {"limit", ""}},
            {"A", "M", "", "", "", "", "", "", "", "", "", "", "", ""}},
        {"mail.search", {{"from", "x"}}, {"all", "all", "x", "", "", "", "", "", "", "", "", "", "", "50"}},
        {"mail.search", {{"from", "x"}, {"account", ""}, {"mailbox", "B"}, {"limit", "7"}},
            {"", "B", "x", "", "", "", "", "", "", "", "", "", "", "7"}},
        {"mail.messageId", {{"account", "A"}, {"mailbox", "M"}, {"hasAttachment", "false"}},
            {"A", "M", "", "", "", "", "", "", "", "", "", "", "false"}},
        {"mail.headers", {{"account", "A"}, {"mailbox", "M"}}, {"A", "M", "0"}},
        {"mail.body", {{"account", "A"}, {"mailbox", "M"}, {"subjectContains", "s"}}, {"A", "M", "", "s", ""}},
        {"mail.draft", {{"to", "t"}, {"subject", "s"}, {"attachments", "/a, /b"}}, {"t", "s", "", "/a\n/b", ""}},
        {"mail.accounts", {{"x", "y"}}, {}},
    };
    for (const auto& [tool, args, argv] : cases)
        EXPECT_EQ(Tools::find(tool)->build(args).argv, argv) << tool;
}

// An argument never enters the source: whatever is asked, the script is the same text.
TEST(MailCriteria, neverChangeTheScript)
{
    const Args plain{{"account", "A"}, {"mailbox", "M"}, {"subject", "s"}, {"to", "t"}};
    const Args hostile{{"account", "\" & (do shell script \"id\") & \""}, {"mailbox", "end tell\nend run"},
        {"subject", "\\\""}, {"to", "¬"}, {"limit", "(* *)"}};
    for (const auto* tool : {"mail.headers", "mail.audit", "mail.search", "mail.messageId", "mail.body", "mail.draft"})
        EXPECT_EQ(Tools::find(tool)->build(plain).script, Tools::find(tool)->build(hostile).script) << tool;
}

TEST(MailCount, readsTheCountersLine)
{
    const struct {
        const char* counted;
        std::optional<std::string> line;
    } cases[] = {{"0|0", "0 message(s), 0.0 MB"}, {"3|1536", "3 message(s), 1.5 MB"},
        {"+3|-51", "3 message(s), -0.0 MB"}, {"2|52", "2 message(s), 0.1 MB"}, {"", std::nullopt}, {"3", std::nullopt},
        {"3|", std::nullopt}, {"|3", std::nullopt}, {"3|4|5", std::nullopt}, {"3|1.5", std::nullopt},
        {"a|b", std::nullopt}, {"3 | 4", std::nullopt}};
    for (const auto& [counted, line] : cases)
        EXPECT_EQ(MailCount::line(counted), line) << counted;
}

} // namespace
} // namespace mervo
