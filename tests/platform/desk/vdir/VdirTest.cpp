#include "platform/desk/vdir/Vdir.h"

#include "platform/desk/vdir/CommitJournal.h"
#include "platform/desk/vdir/VdirCommit.h"
#include "tests/support/Files.h"
#include "tests/support/SmallFiles.h"

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <random>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace mervo::desk {
namespace {

using std::filesystem::path;
using test::readFile;
using test::TempDir;
using test::writeFile;
using testing::HasSubstr;
using testing::ThrowsMessage;

std::string item(int number)
{
    return "item " + std::to_string(number);
}

path itemFile(const path& folder, int number)
{
    return folder / (std::to_string(number) + ".ics");
}

TEST(Vdir, listsCollectionsAndTheirItems)
{
    const TempDir root;
    writeFile(root / "work/a.ics", "A");
    writeFile(root / "work/.b.ics.tmp", "B");
    writeFile(root / "work/displayname", "  Büro \nx");
    writeFile(root / "work/color", "#FF00AAcc");
    writeFile(root / "group/inner/C.ICS", "C");
    std::filesystem::create_directories(root / "empty");
    std::filesystem::create_directories(root / ".hidden/x");
    std::filesystem::create_directories(root / "work/x.ics");
    std::filesystem::create_directory_symlink(root / "work", root / "group/loop");
    ASSERT_EQ(::mkfifo((root / "empty/pipe.ics").c_str(), 0600), 0);
    const VdirListing found = listVdir(root.string() + "/", ".ics");
    std::vector<std::string> ids;
    for (const auto& collection : found.collections)
        ids.push_back(collection.id + "=" + collection.title + "/" + std::to_string(collection.items.size()));
    EXPECT_THAT(ids, testing::UnorderedElementsAre("empty=empty/0", "group/inner=inner/1", "group/loop=Büro/1"));
    EXPECT_EQ(found.skipped.size(), 2U) << "a folder and a pipe with an item's name";
    EXPECT_EQ(readColor("#FF00AAcc"), "#ff00aa");
    std::string why;
    EXPECT_FALSE(readItem(root / "empty/pipe.ics", why));
}

TEST(VdirCommit, makesChangesOfEveryKindTogether)
{
    const TempDir root;
    writeFile(root / "a/1.ics", item(1));
    writeFile(root / "a/2.ics", item(2));
    writeFile(root / "b/displayname", "B");
    std::filesystem::permissions(root / "a/1.ics", std::filesystem::perms(0644));
    VdirCommit commit(root.path());
    commit.replace(root / "a/1.ics", item(1), "new");
    commit.remove(root / "a/2.ics", item(2));
    commit.removeFolder(root / "b", {{"displayname", "B"}});
    commit.makeFolder(root / "c", {{"displayname", "C"}});
    commit.create(root / "c/3.ics", item(3));
    commit.commit();
    EXPECT_EQ(test::tree(root.path()),
        (std::set<std::string>{".mervo", ".mervo/lock", "a", "a/1.ics", "c", "c/displayname", "c/3.ics"}));
    EXPECT_EQ(readFile(root / "a/1.ics"), "new");
    struct stat status { };
    ::stat((root / "a/1.ics").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

/// Each kind of another program's write stops the whole commit, and both sides' files are there afterwards.
TEST(VdirCommit, changesNothingWhenAFileHasChanged)
{
    const TempDir root;
    const auto attempt = [&](const auto& lastStep) {
        VdirCommit commit(root.path());
        commit.replace(root / "a/1.ics", item(1), "new");
        commit.remove(root / "a/2.ics", item(2));
        commit.makeFolder(root / "new", {{"displayname", "N"}});
        commit.create(root / "new/9.ics", item(9));
        lastStep(commit);
        EXPECT_THAT([&] { commit.commit(); }, ThrowsMessage<VdirError>(HasSubstr("another program has written")));
        EXPECT_TRUE(commit.empty());
        EXPECT_EQ(readFile(root / "a/1.ics"), item(1));
        EXPECT_EQ(readFile(root / "a/2.ics"), item(2));
        EXPECT_FALSE(std::filesystem::exists(root / "new"));
    };
    writeFile(root / "a/1.ics", item(1));
    writeFile(root / "a/2.ics", item(2));
    writeFile(root / "a/3.ics", "theirs"); // as long as our "item 3"
    writeFile(root / "b/4.ics", item(4));
    attempt([&](VdirCommit& commit) { commit.replace(root / "a/3.ics", item(3), "new"); });
    attempt([&](VdirCommit& commit) { commit.remove(root / "a/3.ics", item(3)); });
    attempt([&](VdirCommit& commit) { commit.create(root / "a/3.ics", item(3)); });
    attempt([&](VdirCommit& commit) { commit.replace(root / "a/5.ics", item(5), "new"); });
    attempt([&](VdirCommit& commit) { commit.remove(root / "a/5.ics", item(5)); });
    attempt([&](VdirCommit& commit) { commit.removeFolder(root / "b", {}); });
    attempt([&](VdirCommit& commit) { commit.removeFolder(root / "b", {{"4.ics", item(5)}}); });
    EXPECT_EQ(readFile(root / "a/3.ics"), "theirs");
    EXPECT_EQ(readFile(root / "b/4.ics"), item(4));
}

void removeAndAddAll(const path& root, int count)
{
    VdirCommit commit(root);
    for (int i = 0; i < count; ++i) {
        if (i % 2 == 0)
            commit.remove(itemFile(root / "a", i), item(i));
        else
            commit.replace(itemFile(root / "a", i), item(i), "new");
    }
    commit.makeFolder(root / "b", {{"displayname", "B"}});
    commit.create(root / "b/new.ics", "new");
    commit.commit();
}

void fill(const path& root, int count)
{
    std::filesystem::remove_all(root);
    for (int i = 0; i < count; ++i)
        writeFile(itemFile(root / "a", i), item(i));
}

/// 200 kills at moments all over a commit of 200 files: after the next opening all of it is there, or nothing.
TEST(VdirCommit, isWholeWheneverItsProcessIsKilled)
{
    constexpr int kItems = 200, kKills = 200;
    const TempDir folder(test::memory());
    const path root = folder / "root";
    fill(root, kItems);
    const auto before = std::chrono::steady_clock::now();
    removeAndAddAll(root, kItems);
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - before);
    std::minstd_rand random(7); // the same moments in each run
    std::set<std::size_t> outcomes;
    int interrupted = 0;
    for (int kill = 0; kill < kKills; ++kill) {
        fill(root, kItems);
        const auto untouched = test::tree(root / "a");
        const pid_t child = ::fork();
        if (child == 0) {
            removeAndAddAll(root, kItems);
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % (2 * whole.count() + 1)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        interrupted += std::filesystem::exists(root / ".mervo/journal") ? 1 : 0;
        settleVdir(root);
        const auto found = test::tree(root / "a");
        const bool isDone = std::filesystem::exists(root / "b/new.ics");
        ASSERT_EQ(found.size(), isDone ? kItems / 2 : kItems) << kill;
        ASSERT_EQ(std::filesystem::exists(root / "b"), isDone);
        for (const std::string& name : found)
            ASSERT_EQ(readFile(root / "a" / name), isDone ? "new" : item(std::stoi(name))) << kill;
        outcomes.insert(found.size());
    }
    EXPECT_EQ(outcomes.size(), 2U) << "kills came before and after";
    EXPECT_GT(interrupted, 5) << "kills came in between";
}

[[noreturn]] void countUp(const path& root, const path& file, std::atomic<int>& done) noexcept
{
    for (int number = done.load();; ++number) {
        VdirCommit commit(root);
        commit.replace(file, std::to_string(number), std::to_string(number + 1));
        commit.commit();
        done.store(number + 1);
    }
}

/// A process that counts one file up, commit by commit, is killed again and again.
TEST(VdirCommit, ofOneFileIsWholeWheneverItsProcessIsKilled)
{
    constexpr int kKills = 200;
    const TempDir root(test::memory());
    const path file = root / "a/1.ics";
    writeFile(file, "0");
    auto* done = static_cast<std::atomic<int>*>( // the last commit that returned
        ::mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    std::minstd_rand random(7);
    int steps = 0, stages = 0;
    for (int kill = 0; kill < kKills; ++kill) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            countUp(root.path(), file, *done);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 + random() % 3000));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const bool isStep = std::filesystem::exists(root / ".mervo/step");
        steps += isStep ? 1 : 0;
        stages += !isStep && std::filesystem::exists(root / ".mervo/stage") ? 1 : 0;
        settleVdir(root.path());
        const int found = std::stoi(readFile(file));
        ASSERT_TRUE(found == done->load() || found == done->load() + 1) << found << " of " << done->load();
        done->store(found);
    }
    EXPECT_GT(steps, 5) << "kills came behind the journal";
    EXPECT_GT(stages, 5) << "and before it";
    for (const char* left : {"stage/9", "journal.Ab12Cd", "step.Ab12Cd"})
        writeFile(root / ".mervo" / left, "x");
    VdirCommit commit(root.path());
    commit.remove(file, std::to_string(done->load()));
    commit.commit();
    EXPECT_EQ(test::tree(root.path()), (std::set<std::string>{".mervo", ".mervo/lock", "a"})) << "nothing is left over";
    ::munmap(done, sizeof *done);
}

/// A power cut may leave any part of the journal that is not synced, and what it is about done or not.
TEST(VdirCommit, readsTheJournalOfOneStepWhateverIsLeftOfIt)
{
    const TempDir root;
    const path file = root / "a/1.ics", step = root / ".mervo/step";
    writeFile(file, "ours");
    StagedOperation operation{StagedOperation::Kind::replace, file, root / ".mervo/stage/1", *itemStamp(file)};
    const std::string whole = writeJournal(root.path(), {operation});
    writeFile(operation.staged, "theirs"); // what the rename took out, unseen when the kill came
    writeFile(step, whole);
    settleVdir(root.path());
    EXPECT_EQ(readFile(file), "theirs");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        writeFile(file, item(1));
        writeFile(step, size % 2 == 0 ? whole.substr(0, size) : std::string(size, '\0'));
        settleVdir(root.path());
        EXPECT_EQ(test::tree(root.path()), (std::set<std::string>{".mervo", ".mervo/lock", "a", "a/1.ics"})) << size;
        EXPECT_EQ(readFile(file), item(1));
    }
    writeFile(
        root / ".mervo/journal", whole.substr(0, 20)); // that one is synced: whatever tore it, it was no power cut
    EXPECT_THAT([&] { settleVdir(root.path()); }, ThrowsMessage<VdirError>(HasSubstr("cannot be taken back")));
}

/// Processes that each count one file up lose no step; who comes too late hears of it and tries again.
TEST(VdirCommit, losesNoChangeOfSeveralProcesses)
{
    constexpr int kProcesses = 4, kSteps = 25;
    const TempDir root(test::memory());
    const path file = root / "a/1.ics";
    writeFile(file, "0");
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        children.push_back(::fork());
        if (children.back() != 0)
            continue;
        for (int step = 0; step < kSteps;) {
            const std::string old = readFile(file);
            VdirCommit commit(root.path());
            commit.replace(file, old, std::to_string(std::stoi(old) + 1));
            try {
                commit.commit();
                ++step;
            } catch (const VdirError&) {
            }
        }
        ::_exit(0);
    }
    for (const pid_t child : children) {
        int status = 1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(readFile(file), std::to_string(kProcesses * kSteps));
}

TEST(VdirCommit, saysWhatTheDiskDoesNotTake)
{
    const TempDir root;
    writeFile(root / "a/1.ics", item(1));
    VdirCommit commit(root.path());
    commit.remove(root / "a/1.ics", item(1));
    commit.create(root / "a/2.ics", std::string(100'000, 'x'));
    {
        const test::SmallFiles noMore(64 * 1024);
        EXPECT_THAT([&] { commit.commit(); }, ThrowsMessage<VdirError>(HasSubstr("File too large")));
    }
    EXPECT_EQ(test::tree(root.path()), (std::set<std::string>{".mervo", ".mervo/lock", "a", "a/1.ics"}));

    // Nobody's rights are too few even for root, while it acts as somebody else.
    for (const path& folder : {root.path(), root / "a"})
        std::filesystem::permissions(folder, std::filesystem::perms(0555));
    commit.remove(root / "a/1.ics", item(1));
    const bool isRoot = ::geteuid() == 0;
    ASSERT_TRUE(!isRoot || ::seteuid(65534) == 0);
    EXPECT_THAT([&] { commit.commit(); }, ThrowsMessage<VdirError>(HasSubstr("Permission denied")));
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    for (const path& folder : {root.path(), root / "a"})
        std::filesystem::permissions(folder, std::filesystem::perms(0755));
    settleVdir(root.path());
    EXPECT_EQ(readFile(root / "a/1.ics"), item(1));
}

} // namespace
} // namespace mervo::desk
