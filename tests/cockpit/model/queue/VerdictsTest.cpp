#include "tests/cockpit/model/World.h"

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Verdicts = test::World;

TEST_F(Verdicts, runWhatTheCardShowedWhateverBecameOfItsFile)
{
    queue(draft("A", "as shown"));
    start();
    const QString shown = key();
    queue(draft("A", "something else"));
    model->queue()->approve(shown);
    EXPECT_EQ(result(), "⏳ mail.draft - running...");
    EXPECT_TRUE(model->icon()->state().working);
    ASSERT_TRUE(untilResult("✅ mail.draft - draft saved"));
    EXPECT_THAT(ran(), ElementsAre("as shown"));
    EXPECT_THAT(rows(),
        ElementsAre("cockpit|mail.draft|executed|approved|result=draft saved|subject=as shown|to=a@example.org"));
    EXPECT_FALSE(model->icon()->state().working);

    queue(draft("A", "one"));
    model->reload();
    const QString old = key();
    queue(draft("A", "two"));
    model->reload();
    EXPECT_NE(key(), old);
    model->queue()->approve(old);
    model->queue()->reject(old, "");
    EXPECT_TRUE(isQueued("A")) << "no card shows that any more";
}

TEST_F(Verdicts, leaveWaitingWhatCannotRun)
{
    auto unknown = draft("A"), refused = draft("B");
    unknown.tool = "mail.vanish";
    refused.args.erase("to");
    queue(unknown);
    queue(refused);
    start();
    model->queue()->approve(key(0));
    EXPECT_EQ(result(), "unknown tool: mail.vanish");
    model->queue()->approve(key(1));
    EXPECT_EQ(result(), "❌ missing required argument: to");
    EXPECT_EQ(PendingStore().list(), (std::vector{unknown, refused}));
    EXPECT_EQ(model->queue()->list()->rowCount(), 2);
    EXPECT_THAT(rows(), IsEmpty());

    queue(draft("B"));
    model->reload();
    test::writeFile(home / "fail", "");
    model->queue()->approve(key(1));
    ASSERT_TRUE(until([&] { return result().starts_with("❌ mail.draft - "); }));
    EXPECT_THAT(result(), testing::HasSubstr("the mail application is closed"));
    EXPECT_TRUE(isQueued("B"));
    EXPECT_EQ(model->queue()->list()->rowCount(), 2);
    EXPECT_THAT(rows(), ElementsAre(testing::StartsWith("cockpit|mail.draft|error|")));
}

TEST_F(Verdicts, ofTwoCockpitsRunOnce)
{
    start();
    CockpitModel other(surroundings());
    for (int round = 0; round < 10; ++round) {
        queue(draft("A", "round " + std::to_string(round)));
        model->reload();
        other.reload();
        const QString shown = key();
        (round % 2 == 0 ? *model : other).queue()->approve(shown);
        (round % 2 == 0 ? other : *model).queue()->approve(shown);
        EXPECT_EQ((round % 2 == 0 ? other : *model).lastResult()->line(), "mail.draft - no longer waiting");
        ASSERT_TRUE(until([&] { return rows().size() == static_cast<std::size_t>(round) + 1; }));
    }
    EXPECT_THAT(ran(), SizeIs(10));
    queue(draft("B", "never"));
    model->reload();
    other.reload();
    const QString shown = key();
    model->queue()->reject(shown, "");
    model->queue()->approve(shown);
    ASSERT_TRUE(untilResult("🚫 rejected mail.draft"));
    other.queue()->approve(shown);
    EXPECT_EQ(other.lastResult()->line(), "mail.draft - no longer waiting");
    EXPECT_THAT(ran(), SizeIs(10));
}

TEST_F(Verdicts, rejectWithALesson)
{
    auto action = draft("A");
    action.args["from"] = "boss@example.org";
    queue(action);
    start();
    model->queue()->reject(key(), "  too early \n");
    EXPECT_EQ(model->waitingCount(), 0) << "at once";
    ASSERT_TRUE(untilResult("🚫 rejected mail.draft"));
    EXPECT_EQ(rows()[0], "cockpit|mail.draft|rejected|too early|from=boss@example.org|subject=Hi|to=a@example.org");
    EXPECT_EQ(
        FeedbackStore(db).pendingInjection("any").at(0).text, "refus de mail.draft (boss@example.org) : too early");
}

TEST_F(Verdicts, holdUpNothingElse)
{
    queue(draft("A", "slow"));
    start();
    test::writeFile(home / "hold", "");
    model->queue()->approve(key());
    ASSERT_TRUE(until([&] { return ran().size() == 1; }));
    QElapsedTimer waited;
    waited.start();
    queue(draft("B"));
    for (int tick = 0; tick < 20; ++tick)
        model->reload();
    EXPECT_LT(waited.elapsed(), 2000);
    EXPECT_EQ(model->queue()->list()->rowCount(), 1);
    EXPECT_TRUE(model->icon()->state().working);
    std::filesystem::remove(home / "hold");
    ASSERT_TRUE(untilResult("✅ mail.draft - draft saved"));
}

TEST_F(Verdicts, areFinishedOrTakenBackAtTheEnd)
{
    constexpr int kMany = 20; // more than run at once
    for (int i = 0; i < kMany; ++i)
        queue(draft("A" + std::to_string(100 + i), std::to_string(i)));
    start();
    test::writeFile(home / "hold", "");
    while (model->queue()->list()->rowCount() > 0)
        model->queue()->approve(key());
    ASSERT_TRUE(until([&] { return ran().size() == 16; }));
    std::thread release([this] {
        ::usleep(200'000);
        std::filesystem::remove(home / "hold");
    });
    model.reset();
    release.join();
    EXPECT_THAT(rows(), SizeIs(16)) << "each run has its row";
    EXPECT_THAT(ran(), SizeIs(16));
    EXPECT_THAT(PendingStore().list(), SizeIs(kMany - 16)) << "what had not begun waits again";
}

} // namespace
} // namespace mervo
