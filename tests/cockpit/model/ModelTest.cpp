#include "tests/cockpit/model/World.h"

#include <QAbstractItemModelTester>
#include <QMetaMethod>
#include <QSignalSpy>

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Model : public test::World {
protected:
    void loop(const std::string& name, const std::string& more = {}) const
    {
        test::writeFile(home / ("automations/" + name + "/loop.json"), "{\"name\":\"" + name + "\"" + more + "}");
    }
    void state(const std::string& name, const std::string& json) const
    {
        test::writeFile(home / (".runtime/state/" + name + ".json"), json);
    }
};

/// Every signal of an object, counted.
class Listener {
public:
    explicit Listener(const QObject& object)
    {
        for (int at = 0; at < object.metaObject()->methodCount(); ++at) {
            if (object.metaObject()->method(at).methodType() == QMetaMethod::Signal)
                spies_.push_back(std::make_unique<QSignalSpy>(&object, object.metaObject()->method(at)));
        }
    }
    int count() const
    {
        int all = 0;
        for (const auto& spy : spies_)
            all += static_cast<int>(spy->count());
        return all;
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> spies_;
};

TEST_F(Model, showsWhatAnotherProcessWritesAndStaysStillOtherwise)
{
    loop("morning");
    loop("ask-harvest", ",\"system\":true");
    start();
    EXPECT_EQ(model->automations()->list()->rowCount(), 1);
    elsewhere({"queue", "A", "from elsewhere"});
    elsewhere({"ask", "Q1", "Move\u202E it?"});
    elsewhere({"rule", "R1"});
    elsewhere({"lower"});
    loop("evening");
    model->reload();
    EXPECT_EQ(model->waitingCount(), 2);
    EXPECT_EQ(role(*model->queue()->list(), 0, ApprovalListModel::AgeRole).toString(), "5 minutes ago");
    EXPECT_EQ(role(*model->questions()->list(), 0, QuestionListModel::TextRole).toString(), "Move<U+202E> it?");
    EXPECT_EQ(role(*model->questions()->list(), 0, QuestionListModel::AutomationRole).toString(), "morning");
    EXPECT_EQ(role(*model->automations()->list(), 0, AutomationListModel::NameRole).toString(), "evening");
    EXPECT_EQ(model->settings()->autonomyWord(), "panic");
    EXPECT_THAT(model->rules()->all(), SizeIs(1));

    const Listener listeners[] = {Listener(*model), Listener(*model->queue()->list()), Listener(*model->queue()),
        Listener(*model->questions()->list()), Listener(*model->questions()), Listener(*model->automations()->list()),
        Listener(*model->automations()), Listener(*model->rules()), Listener(*model->icon()),
        Listener(*model->settings()), Listener(*model->lastResult()), Listener(*model->trouble())};
    const auto badges = workspace.badges.size();
    for (int tick = 0; tick < 3; ++tick)
        model->reload();
    for (const Listener& listener : listeners)
        EXPECT_EQ(listener.count(), 0);
    EXPECT_EQ(workspace.badges.size(), badges);
    wall += std::chrono::minutes(1);
    model->reload();
    EXPECT_GT(listeners[1].count(), 0) << "an age that reads differently";
    EXPECT_EQ(listeners[0].count(), 0);
}

TEST_F(Model, keepsTheRowsThatStay)
{
    start();
    const QAbstractItemModelTester testers[] = {
        {model->queue()->list(), QAbstractItemModelTester::FailureReportingMode::Fatal, nullptr}};
    QSignalSpy resets(model->queue()->list(), &QAbstractItemModel::modelReset);
    for (const char* id : {"B", "D", "F"})
        queue(draft(id));
    model->reload();
    const QPersistentModelIndex kept = model->queue()->list()->index(1);
    const QString keptKey = key(1);
    for (const char* id : {"A", "C", "E", "G"})
        queue(draft(id));
    PendingStore().remove("B");
    queue(draft("F", "changed"));
    model->reload();
    std::string ids;
    for (int row = 0; row < model->queue()->list()->rowCount(); ++row)
        ids += role(*model->queue()->list(), row, ApprovalListModel::ActionIdRole).toString().toStdString();
    EXPECT_EQ(ids, "ACDEFG");
    EXPECT_TRUE(kept.isValid());
    EXPECT_EQ(kept.data(ApprovalListModel::KeyRole).toString(), keptKey);
    auto later = draft("A");
    later.createdAt = "2026-03-01T09:00:00Z";
    queue(later);
    model->reload();
    EXPECT_EQ(kept.row(), 1);
    EXPECT_EQ(resets.count(), 0);
}

TEST_F(Model, showsEveryArgumentAndNothingAsMarkup)
{
    auto action = draft("A", "<b>\u202Eevil");
    action.args["body"] = std::string(2100, 'x');
    action.args["subjekt"] = "Hi";
    action.preview = "2 message(s)\x1b";
    queue(action);
    start();
    const auto& cards = *model->queue()->list();
    const auto arguments = role(cards, 0, ApprovalListModel::ArgumentsRole).toList();
    ASSERT_EQ(arguments.size(), 4);
    EXPECT_EQ(arguments[1].toMap().value("remark").toString(), "");
    EXPECT_TRUE(arguments[2].toMap().value("hasNoEffect").toBool());
    const QString remark = role(cards, 0, ApprovalListModel::RemarksRole).toString();
    EXPECT_TRUE(remark.startsWith("mail.draft ignores subjekt")) << remark.toStdString();
    EXPECT_EQ(arguments[2].toMap().value("remark").toString(), remark);
    EXPECT_EQ(arguments[0].toMap().value("cutBy").toInt(), 100);
    EXPECT_EQ(arguments[0].toMap().value("shown").toString().size(), 2000);
    EXPECT_EQ(arguments[0].toMap().value("whole").toString().size(), 2100);
    EXPECT_EQ(arguments[1].toMap().value("shown").toString(), "<b><U+202E>evil");
    EXPECT_EQ(role(cards, 0, ApprovalListModel::PreviewRole).toString(), "2 message(s)<U+001B>");
    EXPECT_EQ(role(cards, 0, ApprovalListModel::EmailSubjectRole).toString(), "<b><U+202E>evil");
    EXPECT_TRUE(role(cards, 0, ApprovalListModel::CanOpenInMailRole).toBool());
    model->queue()->openInMail(key());
    EXPECT_THAT(workspace.opened,
        ElementsAre(testing::StartsWith("mailto:a@example.org?subject=%3Cb%3E%E2%80%AEevil&body=xx")));
    model->openSupport();
    EXPECT_THAT(workspace.opened.back(), testing::HasSubstr("?subject=Mervo%20support%20%28"));
}

TEST_F(Model, choosesTheIconByWhatWantsThePersonMost)
{
    using Attention = StatusIconState::Attention;
    start();
    auto& icon = *model->icon();
    const auto attention = [&] { return model->reload(), icon.state().attention; };
    EXPECT_EQ(attention(), Attention::none);
    EXPECT_FALSE(icon.isAnimating());
    elsewhere({"ask", "Q1", "?"});
    EXPECT_EQ(attention(), Attention::proposal);
    loop("killed");
    state("killed", R"({"lastExit":137})");
    EXPECT_EQ(attention(), Attention::proposal) << "a stopped agent has not failed";
    loop("broken", R"(,"kind":"script","command":"x")");
    state("broken", R"({"lastExit":137,"enabled":false})");
    EXPECT_EQ(attention(), Attention::proposal) << "it is paused";
    state("broken", R"({"lastExit":137})");
    EXPECT_EQ(attention(), Attention::error);
    EXPECT_FALSE(icon.isAnimating());
    queue(draft("A"));
    EXPECT_EQ(attention(), Attention::approval);
    EXPECT_TRUE(icon.isAnimating());
    QSignalSpy frames(&icon, &StatusIconDriver::imageChanged);
    ASSERT_TRUE(until([&] { return frames.count() >= 3; }));
    EXPECT_GT(icon.t(), 0.2);
    PendingStore().remove("A");
    state("broken", R"({"lastExit":0})");
    test::writeFile(home / ".runtime/run/broken.lock.d/pid", std::to_string(::getpid()));
    EXPECT_EQ(attention(), Attention::proposal);
    EXPECT_TRUE(icon.state().working);
    std::filesystem::remove_all(home / ".runtime/run");
    model->reload();
    EXPECT_FALSE(icon.isAnimating());
    EXPECT_EQ(icon.t(), 0);
}

TEST_F(Model, writesOneRowForEachChangeOfThePerson)
{
    elsewhere({"ask", "Q1", "?"});
    start();
    PolicyRule rule;
    rule.id = "R1";
    rule.toolPattern = "mail.*";
    rule.decision = PolicyRule::Decision::deny;
    model->questions()->answer("Q1", "  \n");
    model->questions()->answer("Q1", " " + QString(130, 'y') + "\n");
    EXPECT_EQ(model->waitingCount(), 0);
    model->settings()->setAutonomy("yolo");
    model->settings()->setAutonomy("bold");
    model->rules()->add(rule);
    model->rules()->disable(rule.id);
    model->rules()->enable(rule.id);
    ASSERT_TRUE(until([&] { return rows().size() == 5; }));
    ASSERT_TRUE(until([&] { return model->rules()->all().size() == 1 && model->rules()->all()[0].enabled; }));
    model->rules()->remove(rule);
    model->archive()->addIMAPAccount("Work", "me@work.example", "secret");
    ASSERT_TRUE(until([&] { return rows().size() == 7; }));
    model->archive()->addIMAPAccount("Again", "me@work.example", "new");
    ASSERT_TRUE(until([&] { return rows().size() == 8; }));
    EXPECT_THAT(HarnessConfig::load().imapAccounts,
        ElementsAre(IMAPArchiveAccount{"Again", "me@work.example", "imap.gmail.com", 993}));
    model->archive()->removeIMAPAccount("me@work.example");
    ASSERT_TRUE(until([&] { return rows().size() == 9; }));
    EXPECT_THAT(archive.passwords, IsEmpty());
    EXPECT_THAT(rows(),
        ElementsAre("cockpit|remove_imap_account|executed|human|email=me@work.example",
            "cockpit|add_imap_account|executed|human|email=me@work.example|mailAccountName=Again",
            "cockpit|add_imap_account|executed|human|email=me@work.example|mailAccountName=Work",
            "cockpit|rule_remove|executed|human|decision=deny|id=R1", "cockpit|rule_enable|executed|human|id=R1",
            "cockpit|rule_disable|executed|human|id=R1",
            "cockpit|rule_add|executed|human|decision=deny|id=R1|tool=mail.*",
            "cockpit|set_autonomy|executed|human_toggle|mode=yolo",
            "cockpit|ask_answer|executed|human|answer=" + std::string(120, 'y') + "|id=Q1"));
    EXPECT_EQ(HarnessConfig::load().autonomyMode, AutonomyMode::yolo);
    archive.refuses = true;
    model->archive()->addIMAPAccount("X", "x@example.org", "s");
    ASSERT_TRUE(untilResult("❌ x@example.org - the keyring is locked"));
    EXPECT_THAT(HarnessConfig::load().imapAccounts, IsEmpty());
    model->archive()->refreshGmailAccounts();
    EXPECT_TRUE(until([&] { return model->archive()->gmailAccounts().size() == 1; }));
}

TEST_F(Model, changesOneSettingAndKeepsWhatOthersWrote)
{
    start();
    elsewhere({"lower"});
    auto& settings = *model->settings();
    settings.setTerminalApp("iTerm");
    settings.setNotifyEmail("  me@example.org\n");
    settings.setNotifyIMessageHandle(" +32 ");
    settings.setAskChannel("cockpit");
    settings.setAskCleanup("off");
    auto config = HarnessConfig::load();
    EXPECT_EQ(config.autonomyMode, AutonomyMode::panic);
    EXPECT_EQ(config.terminalApp.value_or("") + config.notifyEmail + config.notifyIMessageHandle.value_or("")
            + config.askChannel + config.askCleanup,
        "iTermme@example.org+32cockpitoff");
    settings.setTerminalApp("");
    settings.setNotifyIMessageHandle(" ");
    settings.setAskChannel("pigeon");
    settings.setAskCleanup("burn");
    config = HarnessConfig::load();
    EXPECT_EQ(config.terminalApp, std::nullopt);
    EXPECT_EQ(config.notifyIMessageHandle, std::nullopt);
    EXPECT_EQ(config.askChannel + config.askCleanup, "mailarchive");
    EXPECT_EQ(settings.terminalApp() + settings.askCleanup(), "archive");

    model->settings()->setLaunchAtLogin(true);
    EXPECT_TRUE(settings.launchAtLogin());
    loginItem.refuses = true;
    model->settings()->setLaunchAtLogin(false);
    EXPECT_TRUE(settings.launchAtLogin()) << "the truth of the service";
    EXPECT_EQ(result(), "❌ launch at login - the folder is read-only");
}

TEST_F(Model, tellsAutomationsOfOneNameApartAndCallsThemByTheirOwn)
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

TEST_F(Model, operatesAutomationsAwayFromTheWindow)
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

TEST_F(Model, needsNoScreen)
{
    const auto libraries = elsewhere({"libraries"});
    EXPECT_THAT(libraries, testing::HasSubstr("libQt6Core"));
    for (std::istringstream lines(libraries); lines.good();) {
        std::string line;
        std::getline(lines, line);
        EXPECT_TRUE(line.empty() || line.starts_with("libQt6Core.")) << line;
    }
}

} // namespace
} // namespace mervo
