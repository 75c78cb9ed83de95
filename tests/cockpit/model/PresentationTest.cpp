#include "cockpit/model/automations/AutomationPresentation.h"
#include "cockpit/model/automations/PromptBlocks.h"
#include "cockpit/model/queue/ActionPresentation.h"
#include "cockpit/model/shown/RelativeTime.h"
#include "cockpit/model/shown/ShownText.h"
#include "tests/cockpit/model/World.h"

namespace mervo {
namespace {

using testing::ElementsAre;

TEST(CardPresentation, namesSymbolAndTintOfATool)
{
    const std::tuple<const char*, const char*, const char*> cases[] = {{"mail.send", "paperplane.fill", "blue"},
        {"mail.delete", "trash.fill", "blue"}, {"mail.draft", "square.and.pencil", "blue"},
        {"mail.headers", "tray.full.fill", "blue"}, {"mail.move", "bolt.fill", "blue"},
        {"cal.add", "calendar.badge.plus", "red"}, {"cal.delete", "bolt.fill", "orange"},
        {"reminder.add", "checklist", "purple"}, {"note.add", "note.text", "purple"},
        {"auto.rm", "clock.badge.xmark", "teal"}, {"auto.add", "bolt.fill", "teal"}, {"", "bolt.fill", "orange"}};
    for (const auto& [tool, symbol, tint] : cases) {
        EXPECT_EQ(ActionPresentation::symbol(tool), symbol) << tool;
        EXPECT_EQ(ActionPresentation::tint(tool), tint) << tool;
    }
}

TEST(CardPresentation, tellsTheArgumentsInOneLine)
{
    const std::pair<Args, const char*> cases[] = {{{{"account", "Work"}}, ""}, {{}, ""},
        {{{"zeta", "1"}, {"alpha", "2"}, {"mailbox", "Bills"}, {"olderThan", "30"}, {"from", "x"}, {"account", "W"}},
            "from x · Bills · older 30d · alpha 2 · zeta 1"},
        {{{"hasAttachment", "true"}, {"to", "y"}, {"dest", "Old"}}, "to y · dest Old · hasAttachment true"}};
    for (const auto& [args, line] : cases)
        EXPECT_EQ(ActionPresentation::detailLine(args), line);
}

TEST(CardPresentation, gathersTheMessageThatWouldBeWritten)
{
    const struct {
        const char* tool;
        Args args;
        const char* expected; ///< to|subject|body|can open
    } cases[] = {{"mail.send", {{"to", "a"}}, "none"},
        {"mail.send", {{"to", "a"}, {"subject", "s"}, {"body", "b"}}, "a|s|b|1"},
        {"mail.send", {{"body", "b"}, {"from", "f"}}, "||b|1"},
        {"mail.reply", {{"body", "b"}}, "(original sender)|Re: |b|0"},
        {"mail.replyAll", {{"body", "b"}, {"from", "f"}, {"subjectContains", "bill"}}, "f|Re: bill|b|1"},
        {"mail.reply", {{"body", "b"}, {"to", "t"}, {"subject", "s"}, {"from", "f"}}, "t|s|b|1"}};
    for (const auto& [tool, args, expected] : cases) {
        const auto email = ActionPresentation::email({"A", tool, args, "", "", {}});
        EXPECT_EQ(email
                ? email->to + "|" + email->subject + "|" + email->body + "|" + (email->canOpenInMail ? "1" : "0")
                : "none",
            expected);
    }
}

TEST(CardPresentation, letsNothingOutOfItsFieldInAMailtoUrl)
{
    EXPECT_EQ(ActionPresentation::mailtoUrl({}), "mailto:");
    EXPECT_EQ(ActionPresentation::mailtoUrl({{"to", "a@b,c@d"}, {"subject", ""}}), "mailto:a@b,c@d");
    EXPECT_EQ(
        ActionPresentation::mailtoUrl({{"to", "a@b?bcc=evil@x&y"}, {"subject", "1+1 & é"}, {"body", "x\ny\r\nz#"}}),
        "mailto:a@b%3Fbcc%3Devil@x%26y?subject=1%2B1%20%26%20%C3%A9&body=x%0D%0Ay%0D%0Az%23");
}

TEST(CardPresentation, givesEveryContentAKeyOfItsOwn)
{
    const PendingAction one{"A", "t", {{"a", "bc"}}, "s", "c", std::nullopt};
    std::vector<PendingAction> others(7, one);
    others[0].tool = "tt";
    others[1].args = {{"ab", "c"}};
    others[2].args = {{"a", "b"}, {"c", ""}};
    others[3].summary = "";
    others[4].preview = "";
    others[5].createdAt = "cs";
    others[6].preview = "none";
    std::set<std::string> digests{ActionPresentation::digest(one)};
    for (const auto& other : others)
        EXPECT_TRUE(digests.insert(ActionPresentation::digest(other)).second);
}

TEST(ShownTexts, showWhatIsHiddenAndCountWhatIsLeftOut)
{
    EXPECT_EQ(ShownText::line("a\nb\r\n\u202E\rc<b>"), QString::fromUtf8("a↵b↵<U+202E><U+000D>c<b>"));
    EXPECT_EQ(ShownText::block("a\nb\x1b[0m"), QString("a\nb<U+001B>[0m"));
    EXPECT_EQ(ShownText::line("ééé", 2), QString::fromUtf8("éé... (1 more character)"));
    EXPECT_EQ(ShownText::line("ééé", 3), QString::fromUtf8("ééé"));
    const auto cut = ShownText::cut("x" + std::string(100'000, '\xcc'), 2);
    EXPECT_EQ(cut.shown, QString("x<0xCC>"));
    EXPECT_EQ(cut.leftOut, 99'999U);
}

TEST(RelativeTimes, useTheLargestUnit)
{
    const auto now = *Timestamps::date("2026-03-01T12:00:00Z");
    const std::pair<const char*, const char*> cases[] = {{"2026-03-01T12:00:00Z", "0 seconds ago"},
        {"2026-03-01T11:59:59Z", "1 second ago"}, {"2026-03-01T11:59:00Z", "1 minute ago"},
        {"2026-03-01T11:00:01Z", "59 minutes ago"}, {"2026-02-28T13:00:00Z", "23 hours ago"},
        {"2026-02-23T12:00:00Z", "6 days ago"}, {"2026-02-15T12:00:00Z", "2 weeks ago"},
        {"2025-12-01T12:00:00Z", "3 months ago"}, {"2024-01-01T00:00:00Z", "2 years ago"},
        {"2026-03-01T14:00:00Z", "in 2 hours"}, {"yesterday", ""}, {"", ""}};
    for (const auto& [then, text] : cases)
        EXPECT_EQ(RelativeTime::text(then, now), text) << then;
}

TEST(AutomationRows, tellStateAndLastRun)
{
    using State = AutomationPresentation::State;
    const auto now = *Timestamps::date("2026-03-01T12:00:00Z");
    const struct {
        bool running, enabled;
        Automation::Kind kind;
        std::optional<std::int64_t> exit;
        State state;
        const char* subtitle;
    } cases[] = {{true, false, Automation::Kind::agent, 1, State::running, "running..."},
        {false, false, Automation::Kind::agent, 1, State::paused, "paused"},
        {false, true, Automation::Kind::script, 3, State::failed, "every 6h · last run ✗ exit 3 1 hour ago"},
        {false, true, Automation::Kind::agent, 143, State::stopped, "every 6h · last run ■ stopped 1 hour ago"},
        {false, true, Automation::Kind::tool, 143, State::failed, "every 6h · last run ✗ exit 143 1 hour ago"},
        {false, true, Automation::Kind::agent, 0, State::ok, "every 6h"},
        {false, true, Automation::Kind::agent, {}, State::never, "every 6h"}};
    for (const auto& [running, enabled, kind, exit, state, subtitle] : cases) {
        Automation automation{.name = "a",
            .kind = kind,
            .enabled = enabled,
            .running = running,
            .lastRun = now - std::chrono::hours(1),
            .lastExit = exit};
        EXPECT_EQ(AutomationPresentation::state(automation), state) << subtitle;
        EXPECT_EQ(AutomationPresentation::subtitle(automation, now), subtitle);
    }
}

TEST(PromptDocuments, areReadLineByLine)
{
    using Kind = PromptBlock::Kind;
    EXPECT_THAT(
        promptBlocks("# One\ntext\n  more \n\n## Two\n### Three\n- a\n* b\n+ c\n#no\n```sh\n  # code\n\n```\nend"),
        ElementsAre(PromptBlock{Kind::heading, 1, "One"}, PromptBlock{Kind::paragraph, 0, "text\nmore"},
            PromptBlock{Kind::heading, 2, "Two"}, PromptBlock{Kind::heading, 3, "Three"},
            PromptBlock{Kind::bullet, 0, "a"}, PromptBlock{Kind::bullet, 0, "b"}, PromptBlock{Kind::bullet, 0, "c"},
            PromptBlock{Kind::paragraph, 0, "#no"}, PromptBlock{Kind::code, 0, "  # code\n"},
            PromptBlock{Kind::paragraph, 0, "end"}));
    EXPECT_THAT(promptBlocks("x\n```\nopen"),
        ElementsAre(PromptBlock{Kind::paragraph, 0, "x"}, PromptBlock{Kind::code, 0, "open"}));
    EXPECT_THAT(promptBlocks(""), ElementsAre());
}

} // namespace
} // namespace mervo
