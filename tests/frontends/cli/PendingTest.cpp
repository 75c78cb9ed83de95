#include "core/foundation/Text.h"
#include "tests/frontends/cli/Cli.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>

namespace mervo::test {

using testing::HasSubstr;
using testing::Not;

class PendingTest : public Cli {
protected:
    void queue(const std::string& id, const std::string& createdAt, Args args, std::optional<std::string> preview = {})
    {
        PendingAction action{id, "mail.send", std::move(args), "mail.send to=another", createdAt, preview};
        PendingStore(home()).save(action);
    }
};

TEST_F(PendingTest, listsOldestFirstAndLeavesDamageAlone)
{
    queue("00000002", "2026-03-02T00:00:00Z", {{"to", "b"}}, "2 messages");
    queue("00000001", "2026-03-01T00:00:00Z", {{"to", "a"}});
    writeFile(home() / "pending" / "BROKEN00.json", "{\"id\":");
    writeFile(home() / "pending" / "notes.txt", "x");
    const auto before = tree(home());

    EXPECT_EQ(mervo({"pending"}).out,
        "00000001  2026-03-01T00:00:00Z  mail.send to=a\n"
        "00000002  2026-03-02T00:00:00Z  mail.send to=b\n"
        "          2 messages\n"
        "1 file cannot be read: BROKEN00.json (it holds no whole action); \"mervo doctor\" says what to do.\n");
    EXPECT_EQ(tree(home()), before);
    EXPECT_THAT(mervo({"pending", "BROKEN00"}).err, HasSubstr("the file of action \"BROKEN00\" cannot be read"));
    const Ended outside = mervo({"pending", "../config"});
    EXPECT_EQ(outside.status, 1);
    EXPECT_THAT(outside.err, HasSubstr("no action \"../config\" is waiting"));

    auto stored = nlohmann::json::parse(mervo({"pending", "--json"}).out);
    ASSERT_EQ(stored.size(), 3U);
    EXPECT_EQ(stored[2].dump(), R"({"damaged":"BROKEN00.json","reason":"it holds no whole action"})");
    stored.erase(2);
    for (const auto& object : stored) {
        EXPECT_EQ(
            object, nlohmann::json::parse(readFile(home() / "pending" / (object["id"].get<std::string>() + ".json"))));
    }
}

TEST_F(PendingTest, showsOneActionWholeWithNothingHidden)
{
    const std::string body = std::string(3000, 'x') + "\nend\u202e\x1b[8m";
    queue("0000000A", "2026-03-01T00:00:00Z", {{"body", body}, {"k\ney", "v"}});
    const Ended run = mervo({"pending", "0000000A"});
    EXPECT_EQ(run.out,
        "0000000A  2026-03-01T00:00:00Z  mail.send\n"
        "  body="
            + std::string(3000, 'x')
            + "<U+000A>end<U+202E><U+001B>[8m\n  k<U+000A>ey=v\n"
              "      no effect: mail.send ignores k<U+000A>ey\n");
    EXPECT_EQ(nlohmann::json::parse(mervo({"pending", "0000000A", "--json"}).out)[0]["args"]["body"], body);
    EXPECT_EQ(nlohmann::json::parse(mervo({"pending", "--json"}).out)[0]["remarks"], nlohmann::json::parse(R"([
        {"argument": "k\ney", "sentence": "mail.send ignores k<U+000A>ey", "noEffect": true}])"));
}

TEST_F(PendingTest, textAndJsonAgreeOnWhatIsHidden)
{
    std::string escapes;
    for (const auto& [first, last] : {std::pair{0x20U, 0xD7FFU}, {0xE000U, 0x1FFFFU}, {0xE0000U, 0xE1000U}}) {
        for (unsigned point = first; point <= last; ++point) {
            escapes += point < 0x10000
                ? fmt::format(",\\u{:04x}", point)
                : fmt::format(",\\u{:04x}\\u{:04x}", 0xD7C0 + (point >> 10U), 0xDC00 + (point & 0x3FFU));
        }
    }
    const std::string body = nlohmann::json::parse("\"" + escapes + ",\"").get<std::string>();
    queue("0000000A", "2026-03-01T00:00:00Z", {{"body", body}});
    const auto parts = [](const std::string& text) {
        const auto list = Text::split(text, ',');
        return std::set<std::string>(list.begin(), list.end());
    };
    const std::string json = mervo({"pending", "0000000A", "--json"}).out;
    const auto shown = parts(mervo({"pending", "0000000A"}).out), written = parts(json);
    EXPECT_TRUE(nlohmann::json::parse(json)[0]["args"]["body"] == body);
    for (const std::string& letter : parts(body)) {
        if (letter != "\"" && letter != "\\") {
            EXPECT_EQ(shown.contains(letter), written.contains(letter)) << nlohmann::json(letter).dump(-1, ' ', true);
        }
    }
    for (const char* hidden : {"<U+00AD>", "<U+3164>", "<U+FE0F>", "<U+E0041>"})
        EXPECT_TRUE(shown.contains(hidden)) << hidden;
}

TEST_F(PendingTest, readersCreateNothing)
{
    const std::vector<std::vector<std::string>> readers{{"pending"}, {"pending", "--json"}, {"tools"},
        {"tools", "mail.send"}, {"autonomy"}, {"explain", "mail.send", "to=a", "subject=b", "body=c"},
        {"explain", "mail.accounts", "--json"}, {"doctor"}, {"help"}, {"run", "--help"}, {"--version"}};
    for (const auto& words : readers) {
        EXPECT_NE(mervo(words).status, 2) << words[0];
        EXPECT_FALSE(std::filesystem::exists(home())) << words[0];
    }
    EXPECT_EQ(mervo({"pending"}).out, "Nothing is waiting.\n");
    EXPECT_EQ(mervo({"pending", "--json"}).out, "[]\n");

    ASSERT_EQ(mervo(send()).status, 0); // now there is everything: it stays byte for byte
    const std::string database = readFile(home() / "mervo.sqlite");
    const auto before = tree(home());
    for (const auto& words : readers)
        mervo(words);
    EXPECT_EQ(tree(home()), before);
    EXPECT_EQ(readFile(home() / "mervo.sqlite"), database);
}

} // namespace mervo::test
