#include "core/policy/PendingStore.h"

#include "core/foundation/ServiceError.h"
#include "tests/support/Files.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace mervo {
namespace {

namespace fs = std::filesystem;

PendingAction action(std::string id, std::string createdAt, std::optional<std::string> preview = {})
{
    return {std::move(id), "mail.send", {{"to", "a@b"}, {"body", "\"é\"\n"}}, "mail.send body=... to=a@b",
        std::move(createdAt), std::move(preview)};
}

TEST(PendingAction, hasItsBytes)
{
    EXPECT_EQ(action("AB12CD34", "2026-01-01T00:00:00Z").encode(),
        R"({"id":"AB12CD34","tool":"mail.send","args":{"body":"\"é\"\n","to":"a@b"},)"
        R"("summary":"mail.send body=... to=a@b","createdAt":"2026-01-01T00:00:00Z"})");
    const PendingAction full = action("AB12CD34", "2026-01-01T00:00:00Z", "3 messages");
    EXPECT_EQ(PendingAction::decode(full.encode()), full);
    PendingAction odd = full;
    odd.args["x"] = "\xFF";
    EXPECT_THROW((void)odd.encode(), ServiceError);
}

TEST(PendingAction, decodesOnlyWhatIsWhole)
{
    const std::string head = R"({"id":"A","tool":"t","summary":"s","createdAt":"c")";
    EXPECT_TRUE(PendingAction::decode(head + R"(,"args":{}})"));
    EXPECT_TRUE(PendingAction::decode(head + R"(,"args":{"a":"b"},"preview":null,"later":[1]})"));
    const std::string bad[]{"", "null", "[]", head, head + "}", head + R"(,"args":{"a":1}})", head + R"(,"args":[]})",
        head + R"(,"args":{},"preview":1})", R"({"id":1,"tool":"t","summary":"s","createdAt":"c","args":{}})",
        R"({"tool":"t","summary":"s","createdAt":"c","args":{}})", head + ",\"args\":{\"a\":\"\xFF\"}}",
        head + ",\"args\":" + std::string(2'000'000, '['),
        head + ",\"args\":{},\"x\":" + std::string(1'000'000, '[') + std::string(999'999, ']') + "}"};
    for (const std::string& json : bad)
        EXPECT_FALSE(PendingAction::decode(json)) << json.substr(0, 80);
    EXPECT_TRUE(PendingAction::decode(
        head + ",\"args\":{},\"x\":" + std::string(500'000, '[') + std::string(500'000, ']') + "}"))
        << "deep, but nothing that matters";
}

TEST(PendingStore, listsOldestFirstAndSkipsTheDamaged)
{
    const test::TempDir dir;
    const PendingStore store(dir / "home");
    EXPECT_TRUE(store.list().empty());
    EXPECT_EQ(fs::status(store.dir()).permissions(), fs::perms::owner_all);
    store.save(action("00000002", "2026-01-02T00:00:00Z", "p"));
    store.save(action("FFFFFFFF", "2026-01-01T00:00:00Z"));
    store.save(action("00000003", "2026-01-02T00:00:00Z"));
    test::writeFile(store.dir() / "note.txt", action("NOTE", "0").encode());
    test::writeFile(store.dir() / "upper.JSON", action("UPPER", "0").encode());
    test::writeFile(store.dir() / "half.json", action("HALF", "0").encode().substr(0, 40));
    test::writeFile(store.dir() / "empty.json", "");
    fs::create_directories(store.dir() / "folder.json");
    ASSERT_EQ(::mkfifo((store.dir() / "pipe.json").c_str(), 0600), 0);
    std::vector<std::string> ids;
    for (const PendingAction& listed : store.list())
        ids.push_back(listed.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"FFFFFFFF", "00000002", "00000003"}));
    EXPECT_EQ(PendingStore::listExisting(dir / "home"), store.list());
    EXPECT_EQ(store.load("00000002"), action("00000002", "2026-01-02T00:00:00Z", "p"));
    EXPECT_FALSE(store.load("half") || store.load("gone") || store.load("pipe"));
    EXPECT_EQ(fs::status(store.dir() / "00000002.json").permissions(), fs::perms(0600));
    store.save(action("00000002", "2026-03-01T00:00:00Z"));
    EXPECT_EQ(store.load("00000002"), action("00000002", "2026-03-01T00:00:00Z")) << "the newer file counts";
}

TEST(PendingStore, readingCreatesNothing)
{
    const test::TempDir dir;
    EXPECT_TRUE(PendingStore::listExisting(dir / "home").empty());
    EXPECT_TRUE(test::tree(dir.path()).empty());
}

TEST(PendingStore, anIdNeverLeavesTheFolder)
{
    const test::TempDir dir;
    const PendingStore store(dir.path());
    test::writeFile(dir / "config.json", action("x", "t").encode());
    const std::string ids[]{"../config", "", "a/../../config", "/etc/passwd", std::string("../config.json\0", 15)};
    for (const std::string& id : ids) {
        EXPECT_FALSE(store.load(id)) << id;
        EXPECT_FALSE(store.remove(id)) << id;
    }
    EXPECT_THROW(store.save(action("../config", "t")), ServiceError);
    EXPECT_THROW(store.save(action(std::string("a\0b", 3), "t")), ServiceError);
    EXPECT_EQ(test::tree(dir.path()), (std::set<std::string>{"config.json", "pending"}));
}

TEST(PendingStore, ofSeveralWhoRemoveOneSucceeds)
{
    const test::TempDir dir;
    const PendingStore store(dir.path());
    for (int round = 0; round < 50; ++round) {
        store.save(action("AB12CD34", "t"));
        std::atomic<int> removed{0};
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&] { removed += store.remove("AB12CD34") ? 1 : 0; });
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(removed, 1);
    }
}

TEST(PendingStore, whatCannotBeWrittenIsTold)
{
    const test::TempDir dir;
    test::writeFile(dir / "pending", "in the way");
    const PendingStore store(dir.path());
    try {
        store.save(action("AB12CD34", "t"));
        ADD_FAILURE();
    } catch (const ServiceError& error) {
        EXPECT_EQ(
            error.what(), "\"" + (dir / "pending/AB12CD34.json").string() + "\" could not be written: Not a directory");
    }
    EXPECT_TRUE(store.list().empty());
}

} // namespace
} // namespace mervo
