#include "core/policy/PendingStore.h"

#include "core/foundation/ServiceError.h"
#include "tests/support/Files.h"
#include "tests/support/Growth.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace mervo {
namespace {

namespace fs = std::filesystem;

PendingAction action(std::string id, std::string createdAt, std::optional<std::string> preview = {})
{
    return {std::move(id), "mail.send", {{"to", "a@b"}, {"body", "\"é\"\n"}}, "mail.send body=... to=a@b",
        std::move(createdAt), std::move(preview)};
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

TEST(PendingAction, itsLineComesFromTheArgumentsAndNoValuePosesAsTwo)
{
    const std::pair<Args, std::string> cases[]{
        {{}, "mail.send"},
        {{{"to", "a@b.org"}, {"limit", "10%"}}, "mail.send limit=10% to=a@b.org"},
        {{{"body", "x to=me"}, {"to", "a=b"}}, R"(mail.send body="x to=me" to="a=b")"},
        {{{"body", R"(x" to="me\)"}, {"cc", ""}}, R"(mail.send body="x\" to=\"me\\" cc="")"},
        {{{"a b=c", "1\n2"}, {"s", "x\xC2\xA0y\xE2\x80\xAE"}},
            "mail.send \"a b=c\"=\"1<U+000A>2\" s=\"x\xC2\xA0y<U+202E>\""},
    };
    for (const auto& [args, line] : cases)
        EXPECT_EQ((PendingAction{"A", "mail.send", args, "mail.send to=another", "c", {}}).line(100), line);
    const std::string marks = "x" + test::repeated(100'000, "\xCC\x81");
    for (const std::string& value : {std::string(16'000'000, '\1'), marks, marks + " to=me"}) {
        const std::string line = PendingAction{"A", "t", {{"body", value}, {"to", "x"}}, "", "", {}}.line(100);
        EXPECT_LT(line.size(), 3000U) << "its cost does not grow with the value";
        EXPECT_TRUE(line.ends_with("... (" + std::to_string(value.size() + 12) + " bytes)"));
    }
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
    test::writeFile(store.dir() / "other.json", action("00000002", "0").encode()); // approved, it would remove 00000002
    test::writeFile(store.dir() / "sparse.json", "{");
    fs::resize_file(store.dir() / "sparse.json", 1'500'000'000);
    std::vector<std::string> ids, damaged;
    const auto listing = PendingStore::listing(dir / "home");
    for (const PendingAction& listed : listing.actions)
        ids.push_back(listed.id);
    for (const auto& [name, reason] : listing.damaged)
        damaged.push_back(name + ": " + reason);
    EXPECT_EQ(ids, (std::vector<std::string>{"FFFFFFFF", "00000002", "00000003"}));
    EXPECT_EQ(store.list(), listing.actions);
    EXPECT_EQ(damaged,
        (std::vector<std::string>{"empty.json: it holds no whole action", "folder.json: Is a directory",
            "half.json: it holds no whole action", "other.json: its id is \"00000002\", which is not its name",
            "pipe.json: Operation not supported", "sparse.json: File too large"}));
    EXPECT_FALSE(listing.failure);
    EXPECT_TRUE(PendingStore::listing(dir / "home/pending/half.json").failure) << "no folder";
    EXPECT_EQ(store.load("00000002"), action("00000002", "2026-01-02T00:00:00Z", "p"));
    EXPECT_FALSE(store.load("half") || store.load("gone") || store.load("pipe") || store.load("other"));
    EXPECT_EQ(fs::status(store.dir() / "00000002.json").permissions(), fs::perms(0600));
    store.save(action("00000002", "2026-03-01T00:00:00Z"));
    EXPECT_EQ(store.load("00000002"), action("00000002", "2026-03-01T00:00:00Z")) << "the newer file counts";
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

} // namespace
} // namespace mervo
