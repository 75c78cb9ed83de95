#include "tests/cockpit/model/World.h"

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Notices : public test::World {
protected:
    void pass(std::chrono::seconds time) { steady += time; }
};

TEST_F(Notices, announceOneActionWithItsDecision)
{
    auto action = draft("0A1B2C3D");
    queue(draft("EARLIER1"));
    start();
    EXPECT_THAT(notifier.posted, IsEmpty()) << "what waits at the start is not announced";
    PendingStore().remove("EARLIER1");
    action.preview = "3 message(s)\u202E";
    queue(action);
    model->reload();
    ASSERT_THAT(notifier.posted, SizeIs(1));
    const auto& posted = notifier.posted[0];
    EXPECT_EQ(posted.id, "mervo-action-0A1B2C3D");
    EXPECT_EQ(posted.title, "Approve mail.draft?");
    EXPECT_EQ(posted.body, "3 message(s)<U+202E>");
    EXPECT_EQ(posted.context, "0A1B2C3D");
    EXPECT_TRUE(posted.hasSound);
    ASSERT_THAT(posted.actions, SizeIs(2));
    EXPECT_EQ(posted.actions[0].id + posted.actions[0].title, "APPROVEApprove");
    EXPECT_EQ(posted.actions[1].id + posted.actions[1].title, "REJECTReject");
    EXPECT_TRUE(posted.actions[1].isDestructive && !posted.actions[0].isDestructive);
    EXPECT_THAT(workspace.badges, ElementsAre("1"));
}

TEST_F(Notices, sumUpWhatIsMoreThanOne)
{
    start();
    queue(draft("A"));
    queue(draft("B"));
    model->reload();
    ASSERT_THAT(notifier.posted, SizeIs(1));
    EXPECT_EQ(notifier.posted[0].id + "|" + notifier.posted[0].title + "|" + notifier.posted[0].body,
        "mervo-summary|2 actions to approve|Open Mervo to review the queue.");
    EXPECT_THAT(notifier.posted[0].actions, IsEmpty());
    EXPECT_THAT(notifier.removed, ElementsAre("mervo-summary"));
    pass(std::chrono::seconds(60));
    queue(draft("C"));
    model->reload();
    EXPECT_EQ(notifier.posted.back().title, "3 actions to approve") << "one new, three in all";
}

TEST_F(Notices, keepStillForAMinuteWhateverTheWallClockDoes)
{
    start();
    queue(draft("A"));
    model->reload();
    pass(std::chrono::seconds(59));
    wall -= std::chrono::hours(24);
    queue(draft("B"));
    model->reload();
    pass(std::chrono::seconds(2));
    model->reload();
    EXPECT_THAT(notifier.posted, SizeIs(1)) << "what came too early is not announced later";
    EXPECT_EQ(workspace.badges.back(), "2");
    queue(draft("C"));
    model->reload();
    EXPECT_THAT(notifier.posted, SizeIs(2));
    for (const char* id : {"A", "B", "C"})
        PendingStore().remove(id);
    model->reload();
    EXPECT_EQ(workspace.badges.back(), "") << "cleared, not 0";
}

TEST_F(Notices, decideWhatTheyShowed)
{
    start();
    int shown = 0;
    QObject::connect(&*model, &CockpitModel::activationRequested, [&] { ++shown; });
    queue(draft("A", "first"));
    model->reload();
    queue(draft("A", "replaced"));
    notifier.onResponse("APPROVE", "A");
    EXPECT_EQ(shown, 1) << "another action under the same id is for the person to look at";
    EXPECT_TRUE(isQueued("A"));
    queue(draft("A", "first"));
    notifier.onResponse("APPROVE", "A");
    ASSERT_TRUE(untilResult("✅ mail.draft - draft saved"));
    EXPECT_THAT(ran(), ElementsAre("first"));
    EXPECT_THAT(notifier.removed, testing::Contains("mervo-action-A"));

    notifier.onResponse("APPROVE", "A"); // gone
    notifier.onResponse("APPROVE", "");
    notifier.onResponse("REJECT", "nobody");
    notifier.onResponse("default", "A");
    EXPECT_EQ(shown, 2);

    pass(std::chrono::seconds(60));
    queue(draft("B"));
    model->reload();
    notifier.onResponse("REJECT", "B");
    ASSERT_TRUE(untilResult("🚫 rejected mail.draft"));
    EXPECT_FALSE(isQueued("B"));
    EXPECT_EQ(rows()[0], "cockpit|mail.draft|rejected|rejected from notification|subject=Hi|to=a@example.org");
    EXPECT_THAT(ran(), SizeIs(1));
}

} // namespace
} // namespace mervo
