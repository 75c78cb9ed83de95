#include "cockpit/model/automations/AutomationPresentation.h"
#include "cockpit/model/automations/PromptBlocks.h"
#include "tests/cockpit/model/World.h"

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

using Automations = test::World;

TEST_F(Automations, ofOneNameAreToldApartAndCalledByTheirOwn)
{
    test::writeFile(home / "automations/a/loop.json", R"({"name":"od\u200bd"})");
    test::writeFile(home / "automations/b/loop.json", R"({"name":"od\u200bd"})");
    start();
    ASSERT_EQ(model->automations()->list()->rowCount(), 2);
    EXPECT_EQ(role(*model->automations()->list(), 0, AutomationListModel::NameRole).toString(), "od<U+200B>d");
    EXPECT_EQ(role(*model->automations()->list(), 0, AutomationListModel::AutomationRole).toString(), "od\u200Bd");
    std::filesystem::remove_all(home / "automations/b");
    model->reload();
    EXPECT_EQ(model->automations()->list()->rowCount(), 1);
}

TEST_F(Automations, areOperatedAwayFromTheWindow)
{
    loop("morning");
    test::writeFile(home / "automations/morning/AGENT.md", "# Hello\u200B\ntext");
    start();
    EXPECT_EQ(model->automations()->promptBlocks("morning").at(0).toMap().value("text").toString(), "Hello<U+200B>");
    EXPECT_THAT(model->automations()->promptBlocks("nobody"), SizeIs(0));
    model->automations()->openLog("morning");
    EXPECT_EQ(result(), "no log yet for 'morning'");
    test::writeFile(home / ".runtime/logs/morning.log", "x");
    model->automations()->openLog("morning");
    EXPECT_THAT(workspace.opened, ElementsAre(home / ".runtime/logs/morning.log"));
    for (const char* name : {"nobody", "../morning"}) {
        model->automations()->openFolder(name);
        EXPECT_EQ(result(), std::string("❌ ") + name + " - its folder is not there");
    }
    workspace.opens = false;
    model->openSupport();
    EXPECT_EQ(result(), "❌ Support - this desktop has no program that opens it");

    model->automations()->run("morning");
    EXPECT_EQ(result(), "▶ morning - started");
    EXPECT_TRUE(model->icon()->state().working);
    QElapsedTimer waited;
    waited.start();
    ASSERT_TRUE(until([&] { return !model->icon()->state().working; }));
    EXPECT_GE(waited.elapsed(), 750);
    model->automations()->stop("morning");
    EXPECT_EQ(result(), "■ morning - stopping");
    EXPECT_FALSE(model->icon()->state().working);
    model->automations()->openLive("morning");
    EXPECT_EQ(result(), "↗ morning - opening in Terminal");
    model->automations()->pause("morning");
    model->automations()->remove("morning");
    ASSERT_TRUE(until([&] { return automations.deeds.size() == 5; }));
    EXPECT_THAT(automations.deeds,
        testing::UnorderedElementsAre(
            "run morning", "stop morning", "live morning", "pause morning", "remove morning"));
    automations.refuses = true;
    model->automations()->openLive("morning");
    ASSERT_TRUE(untilResult("❌ morning - no terminal"));
    EXPECT_EQ(model->icon()->state().attention, StatusIconState::Attention::error);
    model->automations()->openLog("nobody");
    EXPECT_EQ(model->icon()->state().attention, StatusIconState::Attention::none);
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
        {false, true, Automation::Kind::agent, 137, State::stopped, "every 6h · last run ■ stopped 1 hour ago"},
        {false, true, Automation::Kind::agent, -1, State::failed, "every 6h · last run ✗ exit -1 1 hour ago"},
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

TEST(AutomationRows, tellTheNextRunAndAMissedOne)
{
    const auto now = *Timestamps::date("2026-03-01T12:00:00Z");
    const auto noOffset = [](platform::Moment) { return std::chrono::seconds(0); };
    const struct {
        Automation::Schedule schedule;
        int lastHoursAgo;
        const char* text;
    } cases[] = {{Automation::Calendar{7, 30}, 1, "next in 19 h"}, {Automation::Calendar{7, 30}, 12, "missed 07:30"},
        {Automation::Calendar{22, 5}, 24, "missed 2026-02-28 22:05"},
        {Automation::Calendar{12, 45}, 1, "next in 45 min"}, {Automation::Interval{3 * 1440}, 1, "next in 1 d"},
        {Automation::Hours{{}, 0}, 1, ""}};
    for (const auto& [schedule, hours, text] : cases) {
        Automation automation{.schedule = schedule, .lastRun = now - std::chrono::hours(hours)};
        const auto since = std::chrono::floor<std::chrono::seconds>(now - std::chrono::hours(36));
        EXPECT_EQ(AutomationPresentation::upcoming(automation, since, now, noOffset), text);
        EXPECT_EQ(AutomationPresentation::upcoming(automation, {}, now, noOffset), "") << "without a job";
        automation.running = true;
        EXPECT_EQ(AutomationPresentation::upcoming(automation, since, now, noOffset), "");
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
