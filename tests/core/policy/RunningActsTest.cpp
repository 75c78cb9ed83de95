#include "core/policy/RunningActs.h"

#include "core/foundation/StoreFailures.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace mervo {
namespace {

class Acts : public testing::Test {
protected:
    static Tool tool(Effect effect)
    {
        Tool made;
        made.id = "test.act";
        made.effect = effect;
        return made;
    }
    /// Another process begins an act and is killed.
    void beginAndDie(const Args& args, bool ending = false)
    {
        const pid_t id = ::fork();
        if (id == 0) {
            RunningAct running(home.path(), tool(Effect::create), args, "someone", "yolo_auto");
            if (ending)
                running.ending();
            ::raise(SIGKILL);
        }
        ::waitpid(id, nullptr, 0);
    }
    std::set<std::string> files() const { return test::tree(home / ".runtime/acts"); }

    test::TempDir home;
    AuditLog audit{std::make_shared<MervoDB>(home.path())};
};

TEST_F(Acts, ofAKilledProcessGetOneRow)
{
    const Args args{{"quote", "\"\n\x01 \xC3\xA9"}, {"much", std::string(2'000'000, 'x')}};
    for (int i = 0; i < 5; ++i)
        beginAndDie(args);
    ASSERT_EQ(files().size(), 5U);
    std::vector<std::thread> several;
    for (int i = 0; i < 4; ++i)
        several.emplace_back([&] { RunningActs::recordEnded(home.path(), audit); });
    for (std::thread& one : several)
        one.join();
    const auto rows = audit.recent(100);
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_EQ(rows[0].details, args);
    EXPECT_EQ(rows[0].actor + rows[0].action + rows[0].outcome, "someonetest.acterror");
    EXPECT_EQ(rows[0].reason, "mervo was ended while this ran; it may have acted (yolo_auto)");
    EXPECT_TRUE(files().empty());
}

TEST_F(Acts, thatHaveTheirRowGetNoSecond)
{
    const auto log = [&](const char* actor, const Args& details) {
        audit.log(actor, "test.act", std::nullopt, details, "executed", "yolo_auto");
    };
    const auto sweep = [&] {
        RunningActs::recordEnded(home.path(), audit);
        return std::pair(audit.count(), files().size());
    };
    beginAndDie({{"a", "1"}, {"result", "mine"}}, true);
    log("someone", {{"a", "1"}, {"result", "done"}});
    EXPECT_EQ(sweep(), std::pair(std::int64_t{1}, std::size_t{0}));
    beginAndDie({{"a", "2"}}, true);
    log("another", {{"a", "2"}});
    EXPECT_EQ(sweep().first, 3) << "it is not another's row";
    beginAndDie({{"a", "1"}});
    EXPECT_EQ(sweep().first, 4) << "nor that of an equal act, when its own was not yet begun";
}

TEST_F(Acts, thatRunAreLeftAlone)
{
    {
        const RunningAct running(home.path(), tool(Effect::destructive), {}, "me", "");
        const RunningAct read(home.path(), tool(Effect::read), {}, "me", "");
        ASSERT_EQ(files().size(), 1U);
        struct stat status { };
        ASSERT_EQ(::stat((home / ".runtime/acts" / *files().begin()).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U);
        RunningActs::recordEnded(home.path(), audit);
        EXPECT_EQ(audit.count(), 0);
    }
    EXPECT_TRUE(files().empty());
}

TEST_F(Acts, waitForATrailThatTakesTheirRow)
{
    beginAndDie({});
    AuditLog none{std::shared_ptr<MervoDB>()};
    RunningActs::recordEnded(home.path(), none);
    EXPECT_EQ(files().size(), 1U);
    RunningActs::recordEnded(home.path(), audit);
    EXPECT_EQ(audit.count(), 1);
}

TEST_F(Acts, damagedFilesAreNamedAndLeft)
{
    const auto folder = home / ".runtime/acts";
    for (const char* bytes : {"", "{", "[]", R"({"actor":"a","tool":"t","why":"","args":{"a":1}})", "\xFF"})
        test::writeFile(folder / (std::to_string(files().size()) + ".json"), bytes);
    std::filesystem::create_symlink("/etc/hostname", folder / "link.json");
    ::mkfifo((folder / "pipe.json").c_str(), 0600);
    std::filesystem::create_directory(folder / "folder.json");
    test::writeFile(folder / "sparse.json", "");
    std::filesystem::resize_file(folder / "sparse.json", 1'500'000'000);
    RunningActs::recordEnded(home.path(), audit);
    EXPECT_EQ(audit.count(), 0);
    EXPECT_EQ(RunningActs::damaged(home.path()).size(), 6U) << "what is no regular file can be nobody's act";
    EXPECT_EQ(files().size(), 9U);
}

TEST_F(Acts, thatCannotBeNotedAreHeardOf)
{
    test::writeFile(home / ".runtime", "no folder");
    const StoreFailures::Scope failures;
    const RunningAct running(home.path(), tool(Effect::create), {}, "me", "");
    EXPECT_EQ(failures.first().rfind("the running act could not be noted", 0), 0U) << failures.first();
}

} // namespace
} // namespace mervo
