#include "platform/desk/settings/Configuration.h"

#include "platform/desk/chat/ChatSettings.h"
#include "platform/desk/mail/MailSettings.h"

#include <gmock/gmock.h>

namespace mervo::desk {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr Section kSections[] = {kMailSection, kChatSection};

Configuration parse(const std::string& text)
{
    return Configuration::parse(text, "/c/desk.toml", kSections);
}

std::string account(const std::string& name, const std::string& more)
{
    return "[[mail.account]]\nname = \"" + name + "\"\nemail = [\"me@x.example\"]\npath = \"/m\"\n" + more;
}

TEST(Configuration, readsAnAccountWhole)
{
    const auto accounts = mailAccounts(parse(
        "[[mail.account]]\nname='Work'\nemail=['me@w.example','also@w.example']\npath='~/Mail'\nlayout='nested'\n"
        "server='imap.w.example'\nsendmail=['msmtp','-t']\ndrafts='Entwürfe/Neu'\nsent='S'\ntrash='T'\njunk='J'\n"));
    ASSERT_EQ(accounts.size(), 1U);
    const MailAccountSettings& work = accounts[0];
    EXPECT_EQ(work.addresses, (std::vector<std::string>{"me@w.example", "also@w.example"}));
    EXPECT_TRUE(work.root.is_absolute() && work.root.filename() == "Mail") << work.root;
    EXPECT_EQ(work.layout, MailLayout::nested);
    EXPECT_EQ(work.sendmail, (std::vector<std::string>{"msmtp", "-t"}));
    EXPECT_EQ(work.drafts, "Entwürfe/Neu");
    EXPECT_FALSE(work.local);
}

TEST(Configuration, hasALocalAccountWhenNoneIsWrittenDown)
{
    for (const char* text : {"", "[mail]\n", "# nothing\n"}) {
        const auto accounts = mailAccounts(parse(text));
        ASSERT_EQ(accounts.size(), 1U) << text;
        EXPECT_EQ(accounts[0].name, "Local");
        EXPECT_TRUE(accounts[0].local);
    }
}

TEST(Configuration, namesLineAndKeyOfEveryMistake)
{
    const std::tuple<std::string, const char*, const char*> cases[] = {
        {"calender = 1\n", "line 1:", "\"calender\""},
        {"[mail]\nacount = 2\n", "line 2:", "\"acount\""},
        {account("A", "pasword = \"x\"\n"), "line 5:", "\"pasword\""},
        {account("A", "layout = \"mbox\"\n"), "line 5:", "\"layout\""},
        {account("A", "sendmail = \"msmtp -t\"\n"), "line 5:", "\"sendmail\""},
        {account("A", "server = 5\n"), "line 5:", "\"server\""},
        {account("A", "drafts = \"/etc\"\n"), "line 5:", "\"drafts\""},
        {account("A", "junk = \"a//b\"\n"), "line 5:", "\"junk\""},
        {account("A/B", ""), "line 2:", "\"name\""},
        {account("", ""), "line 2:", "\"name\""},
        {account("A\\tB", ""), "line 2:", "\"name\""},
        {account("A", "") + account("a", ""), "line 6:", "\"name\""},
        {"[[mail.account]]\nemail = [\"a@b\"]\npath = \"/m\"\n", "line 1:", "\"name\""},
        {"[[mail.account]]\nname = \"A\"\npath = \"/m\"\n", "line 1:", "\"email\""},
        {"[[mail.account]]\nname = \"A\"\nemail = []\npath = \"/m\"\n", "line 3:", "\"email\""},
        {"[[mail.account]]\nname = \"A\"\nemail = [\"me at home\"]\npath = \"/m\"\n", "line 3:", "\"email\""},
        {"[[mail.account]]\nname = \"A\"\nemail = [\"a@b\"]\n", "line 1:", "\"path\""},
        {"[[mail.account]]\nname = \"A\"\nemail = [\"a@b\"]\npath = \"Mail\"\n", "line 4:", "\"path\""},
        {"[mail.account]\nname = \"A\"\n", "line 1:", "\"account\""},
        {"mail = 7\n", "line 1:", "\"mail\" must be a table; write accounts as [[mail.account]]."},
        {"messages = 7\n", "line 1:", "\"messages\" must be a table; write [messages]."},
        {"[messages]\nsent = []\n", "line 2:", "\"sent\" is not a known key of \"messages\"."},
        {"[messages]\nsend = [1]\n" + account("A", "server = 5\n"), "line 7:", "\"server\""}, // mail comes first
        {account("A", "server = 5\n") + "[zebra]\n", "line 6:", "\"zebra\""}, // and unknown sections before it
        {"[[mail.account]]\nname = \"A\nemail", "line 2", "desk.toml"},
        {"x = {\n", "line 1", "desk.toml"},
    };
    for (const auto& [text, line, words] : cases) {
        EXPECT_THAT([&written = text] { parse(written); },
            ThrowsMessage<ConfigurationError>(AllOf(HasSubstr("/c/desk.toml, "), HasSubstr(line), HasSubstr(words))))
            << text;
    }
}

} // namespace
} // namespace mervo::desk
