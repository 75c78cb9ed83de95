#include "core/tools/Arguments.h"
#include "core/catalogue/Catalogue.h"
#include "tests/support/Files.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace mervo {
namespace {

std::string refusal(const std::string& id, const Args& args)
{
    const Tool* tool = Tools::find(id);
    if (tool == nullptr)
        return "no such tool";
    try {
        tool->build(args);
    } catch (const ToolError& error) {
        return error.what();
    }
    return "accepted";
}

const std::string kMissing = "missing required argument: ";
const std::string kFilter = kMissing
    + "at least one filter: from / to / before=YYYY-MM-DD / after / olderThan=Ndays / minSize=MB / maxSize=MB / "
      "subject / subjectContains / status=unread|read / hasAttachment";
const std::string kSubject = kMissing + "subject or subjectContains";
const std::string kNoName = "no automation named '' (see auto.list)";
const std::string kEvery = "every= must be minutes > 0";
const std::string kAt = "at= must be HH:MM";
const std::string kHours = "hours= must be a comma list of 0-23";

struct Case {
    const char* tool;
    Args args;
    std::string said;
};

class Refusals : public testing::Test {
protected:
    test::TempDir home;

    void SetUp() override { ::setenv("MERVO_HOME", home.string().c_str(), 1); }
    void TearDown() override { ::unsetenv("MERVO_HOME"); }

    static void check(std::initializer_list<Case> cases)
    {
        for (const auto& [tool, args, said] : cases)
            EXPECT_EQ(refusal(tool, args), said) << tool << " " << testing::PrintToString(args);
    }
};

// Each line stops at the check that its text names: the checks before it pass, those after it would fail.
TEST_F(Refusals, ofMailComeInTheirOrder)
{
    check({
        {"mail.accounts", {{"anything", "goes"}}, "accepted"},
        {"mail.headers", {}, kMissing + "account"},
        {"mail.headers", {{"account", "A"}, {"mailbox", ""}}, kMissing + "mailbox"},
        {"mail.headers", {{"account", " "}, {"mailbox", " "}}, "accepted"},
        {"mail.audit", {{"account", "A"}, {"mailbox", "M"}}, "accepted"},
        {"mail.search", {}, kFilter},
        {"mail.search", {{"account", "A"}, {"mailbox", "M"}, {"limit", "3"}}, kFilter},
        {"mail.search", {{"from", ""}, {"minSize", "0"}}, "accepted"},
        {"mail.search", {{"status", "flagged"}}, "accepted"},
        {"mail.messageId", {}, kFilter},
        {"mail.messageId", {{"subject", "s"}}, kMissing + "account"},
        {"mail.delete", {{"account", "A"}, {"mailbox", "M"}}, kFilter},
        {"mail.delete", {{"to", "x"}}, kMissing + "account"},
        {"mail.delete", {{"to", "x"}, {"account", "A"}, {"mailbox", "M"}}, "accepted"},
        {"mail.move", {}, kMissing + "dest"},
        {"mail.move", {{"dest", "D"}}, kFilter},
        {"mail.move", {{"dest", "D"}, {"hasAttachment", "false"}}, kMissing + "account"},
        {"mail.flag", {{"flag", "true"}, {"color", "red"}}, kFilter},
        {"mail.junk", {{"junk", "false"}}, kFilter},
        {"mail.archive", {}, kMissing + "account"},
        {"mail.archive", {{"account", "A"}}, kFilter},
        {"mail.archive", {{"account", "A"}, {"olderThan", "30"}}, "accepted"},
        {"mail.body", {}, kSubject},
        {"mail.body", {{"subjectContains", "s"}}, kMissing + "account"},
        {"mail.open", {{"account", "A"}, {"mailbox", "M"}}, kSubject},
        {"mail.draft", {}, kMissing + "to"},
        {"mail.draft", {{"to", "a@b"}, {"subject", "s"}}, "accepted"},
        {"mail.reply", {{"body", "b"}}, kSubject},
        {"mail.reply", {{"subject", "s"}, {"body", "b"}}, kMissing + "account"},
        {"mail.forward", {{"to", "a@b"}}, kSubject},
        {"mail.forward", {{"subject", "s"}, {"account", "A"}, {"mailbox", "M"}, {"to", "a@b"}}, "accepted"},
    });
}

TEST_F(Refusals, ofNotificationsReadTheConfigurationEachTime)
{
    const std::string noEmail = kMissing + "notify email (set it in Settings → Notifications)";
    const std::string noHandle = kMissing + "notify iMessage handle (set it in Settings → Notifications)";
    const std::string blank =
        "body is empty - refusing to send a blank notification (use body-file= for large content)";
    check({
        {"mail.notify", {{"subject", "s"}, {"body", "b"}, {"to", "thief@example.org"}}, noEmail},
        {"imessage.notify", {{"text", "t"}, {"to", "thief"}}, noHandle},
    });
    test::writeFile(home / "config.json", R"({"notifyEmail":" \n","notifyIMessageHandle":" "})");
    check({
        {"mail.notify", {{"subject", "s"}, {"body", "b"}}, noEmail},
        {"imessage.notify", {{"text", "t"}}, noHandle},
    });
    test::writeFile(home / "config.json", R"({"notifyEmail":"me@example.org","notifyIMessageHandle":"+33 6"})");
    check({
        {"mail.notify", {}, blank},
        {"mail.notify", {{"body", " \t\r\n"}}, blank},
        {"mail.notify", {{"body", "b"}}, kMissing + "subject"},
        {"mail.notify", {{"body", "b"}, {"subject", "s"}}, "accepted"},
        {"imessage.notify", {{"to", "x"}}, kMissing + "text"},
        {"imessage.notify", {{"text", "t"}}, "accepted"},
    });
}

TEST_F(Refusals, ofTheOtherApplications)
{
    check({
        {"cal.find", {{"days", "soon"}}, "accepted"},
        {"cal.update", {{"contains", "x"}}, "accepted"}, // that nothing changes is said when it runs
        {"reminder.lists", {}, "accepted"},
        {"reminder.find", {{"limit", "x"}}, "accepted"},
        {"reminder.clearCompleted", {}, "accepted"},
        {"reminder.addList", {{"name", ""}}, kMissing + "name"},
        {"reminder.update", {{"name", "n"}, {"due", "someday"}}, "accepted"},
        {"note.list", {}, "accepted"},
        {"note.find", {}, "accepted"},
        {"note.update", {{"name", "n"}}, kMissing + "append or body"},
        {"contact.find", {{"limit", "3"}}, kMissing + "query or email"},
        {"contact.find", {{"email", "x"}}, "accepted"},
        {"contact.add", {{"email", "a@b"}}, kMissing + "first, last, or name"},
        {"contact.add", {{"last", "L"}}, "accepted"},
        {"imessage.read", {{"limit", "many"}}, "accepted"},
        {"app.quit", {{"name", "reMINDers"}}, "accepted"},
        {"app.quit", {{"name", "Finder"}},
            "app.quit name must be one of: Mail, Contacts, Calendar, Notes, Messages, Reminders - got \"Finder\""},
        {"how_it_works", {{"really", "?"}}, "accepted"},
        {"ask.answers", {}, "accepted"},
        {"ask.harvest", {}, "accepted"},
    });
}

TEST_F(Refusals, ofAutomationsComeInTheirOrder)
{
    const std::string work = "work: prompt= | command= | tool=";
    const std::string client = "client must be one of claude, codex, agy, grok";
    test::writeFile(home / "automations/n/loop.json", R"({"name":"n"})");
    check({
        {"auto.list", {}, "accepted"},
        {"auto.log", {}, kNoName},
        {"auto.rm", {{"name", ""}}, kNoName},
        {"auto.enable", {}, kNoName},
        {"auto.disable", {}, kNoName},
        {"auto.run", {}, kNoName},
        {"auto.run", {{"name", "n"}}, "accepted"},
        {"auto.add", {}, kNoName},
        {"auto.add", {{"name", "n"}}, "schedule: every= | at= | hours="},
        {"auto.add", {{"name", "n"}, {"every", "0"}}, kEvery},
        {"auto.add", {{"name", "n"}, {"every", "abc"}}, kEvery},
        {"auto.add", {{"name", "n"}, {"everyMinutes", "-5"}, {"at", "08:30"}}, kEvery},
        {"auto.add", {{"name", "n"}, {"at", "8"}, {"hours", "8"}}, kAt},
        {"auto.add", {{"name", "n"}, {"at", "24:00"}}, kAt},
        {"auto.add", {{"name", "n"}, {"at", "08:60"}}, kAt},
        {"auto.add", {{"name", "n"}, {"at", "08:30:00"}}, kAt},
        {"auto.add", {{"name", "n"}, {"hours", "24"}}, kHours},
        {"auto.add", {{"name", "n"}, {"hours", "8,,12"}}, kHours},
        {"auto.add", {{"name", "n"}, {"hours", ""}}, kHours},
        {"auto.add", {{"name", "n"}, {"hours", "8,12,16"}}, work},
        {"auto.add", {{"name", "n"}, {"at", "08:30"}, {"prompt", ""}}, work},
        {"auto.add", {{"name", "n"}, {"at", "08:30"}, {"prompt", "p"}, {"client", "Claude"}}, client},
        {"auto.add", {{"name", "n"}, {"every", "5"}, {"tool", "ask.harvest"}, {"client", "grok"}}, "accepted"},
        {"auto.edit", {{"at", "8"}}, kNoName},
        {"auto.edit", {{"name", "n"}, {"at", "8"}}, kAt},
        {"auto.edit", {{"name", "n"}, {"client", ""}}, client},
        {"auto.edit", {{"name", "n"}, {"at", "7:00"}}, "accepted"},
    });
}

TEST(Arguments, readTextsAsTheConventionsSay)
{
    const struct {
        const char* text;
        std::optional<std::int64_t> number;
    } numbers[] = {{"7", 7}, {"-7", -7}, {"+7", 7}, {"007", 7}, {"", std::nullopt}, {" 7", std::nullopt},
        {"7 ", std::nullopt}, {"7.0", std::nullopt}, {"+-7", std::nullopt}, {"+", std::nullopt}, {"0x7", std::nullopt},
        {"9223372036854775807", INT64_MAX}, {"9223372036854775808", std::nullopt}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(Arguments::wholeNumber(text), number) << text;

    for (const auto* off : {"false", "FALSE", "False"})
        EXPECT_FALSE(Arguments::isOn({{"flag", off}}, "flag")) << off;
    for (const auto* on : {"true", "0", "no", "", " false"})
        EXPECT_TRUE(Arguments::isOn({{"flag", on}}, "flag", false)) << on;
    EXPECT_TRUE(Arguments::isOn({}, "flag"));
    EXPECT_FALSE(Arguments::isOn({}, "flag", false));

    EXPECT_EQ(Arguments::optional({{"limit", ""}}, "limit", "50"), "") << "present and empty stays empty";
    EXPECT_EQ(Arguments::optional({}, "limit", "50"), "50");

    EXPECT_EQ(Arguments::attachments({{"attachments", " /a b.pdf ,, \t,/c\t,"}}), "/a b.pdf\n/c");
    EXPECT_EQ(Arguments::attachments({}), "");
}

} // namespace
} // namespace mervo
