#include "tests/cockpit/model/World.h"

#include <QMetaMethod>
#include <QSignalSpy>

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Model = test::World;

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

TEST_F(Model, showsWhatOthersWriteAndStaysStillOtherwise)
{
    loop("morning");
    loop("ask-harvest", ",\"system\":true");
    start();
    EXPECT_EQ(model->automations()->list()->rowCount(), 1);
    queue(draft("A", "from elsewhere"));
    ask("Q1", "Move\u202E it?");
    addRule("R1");
    lower();
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

TEST_F(Model, choosesTheIconByWhatWantsThePersonMost)
{
    using Attention = StatusIconState::Attention;
    start();
    auto& icon = *model->icon();
    const auto attention = [&] { return model->reload(), icon.state().attention; };
    EXPECT_EQ(attention(), Attention::none);
    EXPECT_FALSE(icon.isAnimating());
    ask("Q1", "?");
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
    ask("Q1", "?");
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

} // namespace
} // namespace mervo
