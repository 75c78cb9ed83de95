#include "core/approval/Approval.h"
#include "core/feedback/FeedbackStore.h"
#include "core/foundation/MervoDB.h"
#include "core/policy/HarnessRunner.h"
#include "tests/support/Files.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class ApprovalTest : public testing::Test {
protected:
    test::TempDir home;
    std::shared_ptr<MervoDB> db = std::make_shared<MervoDB>(home.path());
    PendingStore pending{home.path()};
    AuditLog audit{db};
    FeedbackStore feedback{db};
    AskService service{feedback};
    Approval::Stores stores{pending, audit, service};

    PendingAction queued(const std::string& tool, Args args = {}) const
    {
        PendingAction action{"0A1B2C3D", tool, std::move(args), tool + " ", "2026-03-01T08:15:42Z", "1 message(s)"};
        pending.save(action);
        return action;
    }

    std::filesystem::path file() const { return home / "pending" / "0A1B2C3D.json"; }

    /// The newest row must be this one, whenever it was written.
    void expectRow(const std::string& tool, const Args& details, const std::string& outcome, const std::string& reason)
    {
        const AuditEntry row = audit.recent(1).at(0);
        EXPECT_EQ(row, (AuditEntry{row.timestamp, "cockpit", tool, {}, details, outcome, reason}));
    }
};

TEST_F(ApprovalTest, runsWhatWasShownAndWritesTheRow)
{
    const auto action = queued("how_it_works", {{"note", "as shown"}});
    auto changed = action;
    changed.tool = "mail.delete"; // the file was replaced behind the person's back
    pending.save(changed);
    const auto result = Approval::approve(action, stores);
    const auto* done = std::get_if<Approval::Executed>(&result);
    ASSERT_NE(done, nullptr);
    EXPECT_GT(done->output.size(), 100U);
    EXPECT_FALSE(std::filesystem::exists(file()));
    EXPECT_EQ(audit.count(), 1);
    expectRow("how_it_works", {{"note", "as shown"}, {"result", HarnessRunner::truncate(done->output, 500)}},
        "executed",
        "approved"); // the action, not its file
    EXPECT_EQ(audit.mutationsToday(), 0) << "a person's approval does not count towards the cap";
}

TEST_F(ApprovalTest, queuesAFailedRunAgain)
{
    ::setenv("MERVO_HOME", home.path().c_str(), 1); // in which no address of the owner is configured
    const auto action = queued("ask", {{"text", "Hi"}});
    const auto result = Approval::approve(action, stores);
    ASSERT_TRUE(std::holds_alternative<Approval::Failed>(result));
    const std::string why =
        "mail.notify failed: missing required argument: notify email (set it in Settings → Notifications)";
    EXPECT_EQ(std::get<Approval::Failed>(result).error, why);
    EXPECT_TRUE(std::get<Approval::Failed>(result).queuedAgain);
    EXPECT_THAT(pending.list(), ElementsAre(action)) << "same id, same time";
    EXPECT_EQ(audit.count(), 1);
    expectRow("ask", {{"text", "Hi"}}, "error", why);
}

TEST_F(ApprovalTest, runsNothingThatItCannotClaim)
{
    const auto action = queued("how_it_works");
    std::filesystem::remove(file());
    EXPECT_TRUE(std::holds_alternative<Approval::AlreadyGone>(Approval::approve(action, stores)));
    test::writeFile(file() / "inside", "a folder cannot be removed like a file");
    EXPECT_TRUE(std::holds_alternative<Approval::AlreadyGone>(Approval::approve(action, stores)));
    EXPECT_EQ(audit.count(), 0);
}

/// Approves on two threads at once, with stores of its own; how often it ran (10 more for any other end).
int approvals(const std::filesystem::path& home, const PendingAction& action)
{
    const auto db = std::make_shared<MervoDB>(home);
    const PendingStore pending(home);
    AuditLog audit(db);
    FeedbackStore feedback(db);
    AskService service(feedback);
    std::atomic<int> ran = 0;
    const auto approve = [&] {
        const auto result = Approval::approve(action, {pending, audit, service});
        if (!std::holds_alternative<Approval::AlreadyGone>(result))
            ran += std::holds_alternative<Approval::Executed>(result) ? 1 : 10;
    };
    std::jthread other(approve);
    approve();
    other.join();
    return ran;
}

TEST_F(ApprovalTest, runsOnceOfTwoProcessesAndTheirThreads)
{
    for (int round = 1; round <= 20; ++round) {
        const auto action = queued("how_it_works");
        std::array<pid_t, 2> children{};
        for (pid_t& child : children) {
            child = ::fork();
            if (child == 0)
                ::_exit(approvals(home.path(), action));
        }
        int ran = 0;
        for (const pid_t child : children) {
            int status = 0;
            ::waitpid(child, &status, 0);
            ASSERT_TRUE(WIFEXITED(status));
            ran += WEXITSTATUS(status);
        }
        ASSERT_EQ(ran, 1);
        ASSERT_EQ(audit.count(), round);
    }
}

TEST_F(ApprovalTest, rejectsWithARowAndALesson)
{
    const struct {
        Args args;
        const char* note;
        const char* reason;
        const char* verdict;
    } cases[] = {
        {{}, "", "user_rejected", "refus de mail.send"},
        {{}, " \n\t ", "user_rejected", "refus de mail.send"},
        {{{"to", "x"}}, "  too early\n", "too early", "refus de mail.send : too early"},
        {{{"from", "boss@example.org"}}, "", "user_rejected", "refus de mail.send (boss@example.org)"},
        {{{"account", "Work"}, {"from", ""}}, "no", "no", "refus de mail.send (Work) : no"},
        {{{"account", "Work"}, {"from", "a@b"}}, "rejected from notification", "rejected from notification",
            "refus de mail.send (a@b Work) : rejected from notification"},
    };
    for (const auto& [args, note, reason, verdict] : cases) {
        const auto action = queued("mail.send", args);
        EXPECT_TRUE(Approval::reject(action, note, stores)) << verdict;
        EXPECT_FALSE(std::filesystem::exists(file()));
        expectRow("mail.send", args, "rejected", reason);
        const auto told = feedback.pendingInjection("any");
        ASSERT_THAT(told, SizeIs(1));
        EXPECT_EQ(told[0].text, verdict);
        EXPECT_EQ(told[0].kind, FeedbackItem::Kind::verdict);
        EXPECT_EQ(told[0].automation, std::nullopt);
        EXPECT_NE(told[0].expiresAt, std::nullopt);
        feedback.remove(told[0].id);
    }
    const auto unknown = queued("mail.vanish");
    EXPECT_TRUE(Approval::reject(unknown, "", stores)) << "what cannot be approved";
    EXPECT_FALSE(Approval::reject(unknown, "", stores)) << "it was gone already";
}

} // namespace
} // namespace mervo
