#include "platform/desk/mail/HeaderIndex.h"
#include "platform/desk/mail/Maildir.h"
#include "tests/support/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

constexpr std::int64_t kNewest = 1'700'000'000;

class HeaderIndexTest : public testing::Test {
protected:
    HeaderIndexTest() { createMaildir(maildir_); }

    /// A message that gets older with its number.
    void put(const std::string& name, int number, const std::string& subject)
    {
        const fs::path file = maildir_ / name;
        test::writeFile(file, "Subject: " + subject + "\nFrom: a@x\n\nbody\n");
        const timespec times[2] = {{kNewest - number, 0}, {kNewest - number, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    }

    /// As if the last change lay long ago, so that the folder's times can be trusted.
    void settle()
    {
        for (const char* part : {"cur", "new"}) {
            const timespec times[2] = {{kNewest, ++settled_}, {kNewest, settled_}};
            ASSERT_EQ(utimensat(AT_FDCWD, (maildir_ / part).c_str(), times, 0), 0);
        }
    }

    static std::vector<std::string> shown(const MailboxSnapshot& snapshot)
    {
        std::vector<std::string> lines;
        for (const MessageRecord& header : snapshot.messages())
            lines.push_back(std::string(header.subject()) + (header.flags().seen ? " seen" : ""));
        return lines;
    }

    std::vector<std::string> seenByAnotherProcess() const
    {
        HeaderIndex index(file_);
        return shown(*index.snapshot(maildir_));
    }

    test::TempDir dir_;
    fs::path maildir_ = dir_ / "mail";
    fs::path file_ = dir_ / "cache/mail-index.sqlite";
    long settled_ = 0;
};

TEST_F(HeaderIndexTest, showsWhatOtherProgramsDidMeanwhile)
{
    put("cur/a:2,S", 1, "A");
    put("new/b", 2, "B");
    settle();
    HeaderIndex index(file_);
    const auto first = index.snapshot(maildir_);
    EXPECT_THAT(shown(*first), ElementsAre("A seen", "B"));
    EXPECT_EQ(index.snapshot(maildir_), first) << "nothing changed";

    put("new/c", 0, "C");
    fs::rename(maildir_ / "new/b", maildir_ / "cur/b:2,RS");
    const auto second = index.snapshot(maildir_);
    EXPECT_THAT(shown(*second), ElementsAre("C", "A seen", "B seen"));
    EXPECT_THAT(seenByAnotherProcess(), ElementsAre("C", "A seen", "B seen"));
    EXPECT_EQ(second->withBase("b")->id(), first->withBase("b")->id()) << "an id stays with its message";

    fs::remove(maildir_ / "cur/a:2,S");
    EXPECT_THAT(shown(*index.snapshot(maildir_)), ElementsAre("C", "B seen"));
    EXPECT_THAT(shown(*first), ElementsAre("A seen", "B")) << "a snapshot never changes";
    EXPECT_THAT(seenByAnotherProcess(), ElementsAre("C", "B seen"));
}

TEST_F(HeaderIndexTest, doesNotTrustATimeThatALaterChangeCouldShare)
{
    put("cur/a:2,", 1, "A");
    HeaderIndex index(file_);
    ASSERT_THAT(shown(*index.snapshot(maildir_)), ElementsAre("A"));
    struct stat before { };
    ASSERT_EQ(stat((maildir_ / "cur").c_str(), &before), 0);
    put("cur/b:2,", 2, "B");
    const timespec times[2] = {before.st_atim, before.st_mtim}; // a coarse clock
    ASSERT_EQ(utimensat(AT_FDCWD, (maildir_ / "cur").c_str(), times, 0), 0);
    EXPECT_THAT(shown(*index.snapshot(maildir_)), ElementsAre("A", "B"));
    EXPECT_THAT(seenByAnotherProcess(), ElementsAre("A", "B"));
}

TEST_F(HeaderIndexTest, parsesAFileOnceOnly)
{
    put("cur/a:2,", 1, "A");
    settle();
    ASSERT_THAT(seenByAnotherProcess(), ElementsAre("A"));
    put("cur/a:2,", 1, "overwritten, which the format forbids");
    put("cur/b:2,", 2, "B");
    EXPECT_THAT(seenByAnotherProcess(), ElementsAre("A", "B"));
}

TEST_F(HeaderIndexTest, isBuiltAnewWhateverHappenedToTheFile)
{
    for (int i = 0; i < 700; ++i)
        put("cur/m" + std::to_string(i) + ":2,", i, "Message " + std::to_string(i));
    settle();
    const std::vector<std::string> right = seenByAnotherProcess();
    ASSERT_EQ(right.size(), 700U);
    const std::string whole = test::readFile(file_);
    const auto damaged = [&](const std::string& bytes) {
        test::writeFile(file_, bytes);
        return seenByAnotherProcess();
    };
    EXPECT_EQ(damaged(""), right);
    EXPECT_EQ(damaged("this is not a database, it only has its name, and it is long enough to be looked at"), right);
    EXPECT_EQ(damaged(whole.substr(0, whole.size() / 2)), right);
    EXPECT_EQ(damaged(whole.substr(0, 100)), right);
    for (std::size_t at = 0; at < whole.size(); at += whole.size() / 97) { // a flipped bit, wherever it is
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
        EXPECT_EQ(damaged(bytes), right) << at;
    }
    fs::remove(file_);
    EXPECT_EQ(seenByAnotherProcess(), right);
}

TEST_F(HeaderIndexTest, isNotNeeded)
{
    put("cur/a:2,S", 1, "A");
    test::writeFile(dir_ / "cache", "a file where the cache folder should be");
    HeaderIndex index(file_);
    const auto first = index.snapshot(maildir_);
    EXPECT_THAT(shown(*first), ElementsAre("A seen"));
    put("new/b", 2, "B");
    const auto second = index.snapshot(maildir_);
    EXPECT_THAT(shown(*second), ElementsAre("A seen", "B"));
    EXPECT_EQ(first->messages()[0].id(), second->messages()[0].id());
}

TEST_F(HeaderIndexTest, isSafeWithSeveralProcessesAtOnce)
{
    for (int i = 0; i < 300; ++i)
        put("cur/m" + std::to_string(i) + ":2,", i, "M" + std::to_string(i));
    std::vector<pid_t> children;
    for (int child = 0; child < 4; ++child) {
        const pid_t pid = fork();
        if (pid == 0) {
            bool good = true;
            for (int round = 0; round < 25 && good; ++round) {
                const std::string name = "new/c" + std::to_string(child) + "-" + std::to_string(round);
                test::writeFile(maildir_ / "tmp" / name.substr(4), "Subject: " + name + "\n\n");
                fs::rename(maildir_ / "tmp" / name.substr(4), maildir_ / name);
                if (round == 10 && child == 0)
                    test::writeFile(file_, "damaged under the feet of the others, who may have it open just now");
                HeaderIndex index(file_);
                const auto now = index.snapshot(maildir_);
                good = now->withBase(name.substr(4)) != nullptr
                    && now->messages().size() >= 300U + static_cast<std::size_t>(round);
            }
            _exit(good ? 0 : 1);
        }
        children.push_back(pid);
    }
    for (const pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    HeaderIndex index(file_);
    const auto now = index.snapshot(maildir_);
    std::set<std::uint32_t> ids;
    for (const MessageRecord& header : now->messages())
        ids.insert(header.id());
    EXPECT_EQ(now->messages().size(), 400U);
    EXPECT_EQ(ids.size(), 400U) << "no id twice";
}

TEST_F(HeaderIndexTest, saysWhichFolderCannotBeReadAndWhy)
{
    HeaderIndex index(file_);
    const auto complains = [&](const fs::path& maildir, const char* words) {
        EXPECT_THAT([&] { index.snapshot(maildir); }, ThrowsMessage<MailError>(HasSubstr(words)));
    };
    complains(dir_ / "nowhere", "nowhere cannot be read: No such file");
    test::writeFile(dir_ / "odd/cur", "a file");
    complains(dir_ / "odd", "odd/cur cannot be read: Not a directory");
    EXPECT_THAT(shown(*index.snapshot(dir_ / "nowhere", WhenMissing::isEmpty)), IsEmpty());
    ASSERT_THAT(shown(*index.snapshot(maildir_)), IsEmpty());
    fs::remove_all(maildir_);
    complains(maildir_, "cannot be read");
}

TEST_F(HeaderIndexTest, givesEveryFileItsSizeDateAndName)
{
    put("cur/\xFFstrange\n:2,", 1, "strange");
    test::writeFile(maildir_ / "cur/empty:2,S", "");
    test::writeFile(maildir_ / "cur/binary:2,", std::string("\0\xFF\x01 no head", 11));
    test::writeFile(maildir_ / "cur/huge:2,", std::string(3'000'000, 'x') + "\n\nbody");
    test::writeFile(maildir_ / "cur/long:2,", "X-Pad: " + std::string(100'000, 'y') + "\nSubject: far down\n\n");
    ASSERT_EQ(mkfifo((maildir_ / "cur/pipe").c_str(), 0600), 0);
    fs::create_symlink("nowhere", maildir_ / "cur/dangling");
    HeaderIndex index(file_);
    const auto now = index.snapshot(maildir_);
    EXPECT_EQ(now->messages().size(), 5U);
    EXPECT_EQ(now->withBase("huge")->size(), 3'000'006U);
    EXPECT_EQ(now->withBase("long")->subject(), "far down");
    EXPECT_EQ(now->withBase("\xFFstrange\n")->receivedSeconds(), kNewest - 1);
    EXPECT_EQ(now->withBase("empty")->subject(), "");
}

} // namespace
} // namespace mervo::desk
