#include "tests/cockpit/model/World.h"
#include "tests/support/SmallFiles.h"

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Faults : public test::World {
protected:
    std::int64_t slowestTick(int ticks)
    {
        std::int64_t slowest = 0;
        for (int i = 0; i < ticks; ++i) {
            QElapsedTimer waited;
            waited.start();
            model->reload();
            slowest = std::max(slowest, std::int64_t{waited.elapsed()});
        }
        return slowest;
    }
};

/// Keeps everybody else from even reading the database.
class Lock {
public:
    explicit Lock(const std::filesystem::path& home)
        : db_(home)
    {
        run("BEGIN EXCLUSIVE");
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { run("COMMIT"); }

private:
    void run(const char* sql)
    {
        db_.database().read([sql](Database& connection) { connection.execute(sql); });
    }

    MervoDB db_;
};

TEST_F(Faults, aLockedDatabaseStopsNeitherTicksNorVerdicts)
{
    ask("Q1", "Move it?");
    addRule("R1");
    queue(draft("A"));
    queue(draft("B", "meanwhile"));
    start();
    std::optional<Lock> lock(std::in_place, home.path());
    const std::int64_t slowest = slowestTick(3);
    EXPECT_TRUE(slowest >= 45 && slowest < 1000) << slowest << " ms; a tick waits 50 ms for the lock";
    EXPECT_EQ(model->questions()->list()->rowCount(), 1) << "what was known stays";
    EXPECT_THAT(model->rules()->all(), SizeIs(1));
    QElapsedTimer waited;
    waited.start();
    model->queue()->reject(key(), "no");
    model->questions()->answer("Q1", "Oui");
    model->settings()->setAutonomy("panic");
    EXPECT_EQ(model->waitingCount(), 1);
    queue(draft("C", "new"));
    EXPECT_LT(slowestTick(3), 1000);
    EXPECT_LT(waited.elapsed(), 5000);
    EXPECT_EQ(model->queue()->list()->rowCount(), 2);
    lock.reset();
    ASSERT_TRUE(untilResult("🚫 rejected mail.draft"));
    ASSERT_TRUE(until([&] { return rows().size() == 3; }));
    EXPECT_THAT(rows(),
        ElementsAre("cockpit|set_autonomy|executed|human_toggle|mode=panic",
            "cockpit|ask_answer|executed|human|answer=Oui|id=Q1",
            testing::StartsWith("cockpit|mail.draft|rejected|no|")));
}

TEST_F(Faults, aDatabaseThatIsTakenAwayAndPutBackIsFollowed)
{
    addRule("R1");
    start();
    ASSERT_THAT(model->rules()->all(), SizeIs(1));
    std::filesystem::remove(home / "mervo.sqlite");
    model->reload();
    EXPECT_THAT(model->rules()->all(), SizeIs(0));
    addRule("R2");
    model->reload();
    ASSERT_THAT(model->rules()->all(), SizeIs(1));
    EXPECT_EQ(model->rules()->all()[0].id, "R2");
    std::filesystem::remove(home / "mervo.sqlite");
    model->settings()->setAutonomy("yolo");
    ASSERT_TRUE(until([&] { return std::filesystem::exists(home / "mervo.sqlite"); }));
    db = std::make_shared<MervoDB>(home.path());
    ASSERT_TRUE(until([&] { return rows().size() == 1; })) << "a row never goes to a file that is gone";
    test::writeFile(home / "mervo.sqlite", std::string(5000, 'x'));
    EXPECT_LT(slowestTick(2), 1000);
}

TEST_F(Faults, damagedAndMissingFilesAreLeftOut)
{
    queue(draft("A"));
    test::writeFile(home / "pending/B.json", "{\"id\":\"B\",");
    test::writeFile(home / "pending/C.json", draft("A", "not mine").encode());
    test::writeFile(home / "pending/notes.txt", "{}");
    test::writeFile(home / "config.json", "[");
    test::writeFile(home / "automations/broken/loop.json", "{");
    start();
    EXPECT_EQ(model->queue()->list()->rowCount(), 1);
    EXPECT_THAT(model->trouble()->line().toStdString(), testing::HasSubstr("is no JSON object"));
    EXPECT_TRUE(until([&] {
        model->reload();
        return model->queue()->unreadable() == "2 waiting files cannot be read; run mervo doctor";
    })) << model->queue()->unreadable().toStdString();
    test::writeFile(home / "pending/B.json", draft("B").encode());
    model->reload();
    EXPECT_EQ(model->queue()->list()->rowCount(), 2);
    std::filesystem::remove_all(home / "pending");
    model->reload();
    EXPECT_EQ(model->queue()->list()->rowCount(), 0);
    EXPECT_EQ(workspace.badges.back(), "");
    queue(draft("D"));
    model->reload();
    EXPECT_EQ(model->queue()->list()->rowCount(), 1);
    std::filesystem::remove_all(home / "pending");
    test::writeFile(home / "pending", "a file in the folder's place");
    model->queue()->approve(key());
    EXPECT_EQ(result(), "mail.draft - no longer waiting");
}

TEST_F(Faults, whatAStoreCouldNotDoIsSaidAndGoesWhenItWorksAgain)
{
    ask("Q1", "?");
    queue(draft("A"));
    queue(draft("B"));
    start();
    const std::string whole = test::readFile(home / "mervo.sqlite");
    test::writeFile(home / "mervo.sqlite", std::string(5000, 'x'));
    model->reload();
    EXPECT_EQ(model->trouble()->line(), "") << "at one tick it is no news";
    steady += std::chrono::seconds(3);
    model->reload();
    EXPECT_THAT(model->trouble()->line().toStdString(),
        testing::StartsWith("❌ the audit trail and the rules could not be read"));
    EXPECT_EQ(model->questions()->list()->rowCount(), 1) << "what was known stays";
    model->questions()->answer("Q1", "Oui");
    ASSERT_TRUE(until([&] { return result().starts_with("❌ answering - "); })) << result();
    model->queue()->approve(key());
    ASSERT_TRUE(until([&] {
        return result().starts_with("❌ mail.draft ran, but the audit row could not be written: ");
    })) << result();
    model->queue()->reject(key(), "");
    ASSERT_TRUE(until([&] { return result().starts_with("❌ rejecting mail.draft - "); })) << result();
    EXPECT_EQ(model->icon()->state().attention, StatusIconState::Attention::error);
    test::writeFile(home / "mervo.sqlite", whole);
    model->reload();
    EXPECT_EQ(model->trouble()->line(), "");
}

TEST_F(Faults, aFullDiskIsToldOfAndRoomAgainIsUsed)
{
    queue(draft("A"));
    queue(draft("B", "later"));
    start();
    {
        const test::SmallFiles full(0);
        model->queue()->approve(key());
        ASSERT_TRUE(until([&] { return result().starts_with("❌ mail.draft - "); })) << result();
    }
    EXPECT_THAT(ran(), IsEmpty());
    model->queue()->approve(key(model->queue()->list()->rowCount() - 1));
    ASSERT_TRUE(untilResult("✅ mail.draft - draft saved"));
    EXPECT_THAT(ran(), ElementsAre("later"));
    EXPECT_THAT(rows()[0], testing::StartsWith("cockpit|mail.draft|executed|approved|"));
}

TEST_F(Faults, aSettingThatCannotBeSavedIsNotShownAsSet)
{
    start();
    std::filesystem::create_directory(home / "config.json");
    model->settings()->setAutonomy("yolo");
    EXPECT_EQ(model->settings()->autonomyWord(), "copilote");
    EXPECT_THAT(result(), testing::StartsWith("❌ "));
    model->settings()->setNotifyEmail("me@example.org");
    EXPECT_EQ(model->settings()->notifyEmail(), "");
}

TEST_F(Faults, anActWhoseProcessWasKilledGetsItsRow)
{
    const std::string act = R"({"actor":"mcp:x","args":{"to":"a"},"tool":"mail.send","why":"yolo_auto"})";
    const std::string row = "mcp:x|mail.send|error|mervo was ended while this ran; it may have acted (yolo_auto)|to=a";
    test::writeFile(home / ".runtime/acts/one.json", act);
    start();
    ASSERT_TRUE(until([&] { return rows() == std::vector{row}; }));
    test::writeFile(home / ".runtime/acts/two.json", act);
    ASSERT_TRUE(until([&] { return rows() == std::vector{row, row}; })) << "it looks again and again";
    EXPECT_TRUE(test::tree(home / ".runtime/acts").empty());
}

} // namespace
} // namespace mervo
