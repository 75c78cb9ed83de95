#include "platform/unicode.h"
#include "tests/frontends/cli/Cli.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

/// What comes out where: pipes, terminals, streams that fail.
namespace mervo::test {

using testing::HasSubstr;
using testing::StartsWith;

using OutputTest = Cli;

// An escape sequence, an override of the direction, a C1 control, a zero-width blank.
constexpr const char* kHostile = "a\x1b[2J\u202eb\u009bc\u200bd";
constexpr const char* kVisible = "a<U+001B>[2J<U+202E>b<U+009B>c<U+200B>d";

TEST_F(OutputTest, aToolsTextIsRawInAPipeAndVisibleOnATerminal)
{
    const Environment hostile{{"SCRIPT_ANSWER", kHostile}};
    EXPECT_EQ(mervo({"run", "mail.accounts"}, hostile).out, std::string(kHostile) + "\n");

    const Ended shown = onTerminal({"run", "mail.accounts"}, hostile);
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.out, std::string(kVisible) + "\r\n");
}

TEST_F(OutputTest, anErrorOfAScriptIsVisibleEverywhere)
{
    const Environment failing{{"SCRIPT_ERROR", std::string("x: execution error: ") + kHostile}};
    const Ended run = mervo({"run", "mail.accounts"}, failing);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, std::string("error: execution error: ") + kVisible + "\n");
}

TEST_F(OutputTest, aStreamThatCannotTakeTheTextIsAFailure)
{
    const Ended full = shell("\"$0\" tools >/dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "error: the output could not be written: No space left on device\n");

    const Ended closed = shell("\"$0\" run how_it_works >&-");
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(closed.err, "error: the output could not be written: Bad file descriptor\n");

    const Ended readerGone = runProgram("/usr/bin/env",
        {"python3", "-c",
            "import os, subprocess, sys\n"
            "reader, writer = os.pipe(); os.close(reader)\n"
            "sys.exit(subprocess.run(sys.argv[1:], stdout=writer).returncode)",
            program().string(), "tools"},
        environment());
    EXPECT_EQ(readerGone.status, 1);
    EXPECT_EQ(readerGone.err, "");
}

TEST_F(OutputTest, nothingTakesThePlaceOfAClosedStream)
{
    // The pipes of the script host would be the first to take the free numbers.
    EXPECT_EQ(shell("\"$0\" run mail.accounts <&- >&- 2>&-", {}, {{"SCRIPT_ANSWER", "Work"}}).status, 1);
    EXPECT_EQ(shell("\"$0\" \"$@\" <&- >&- 2>&-", send()).status, 1);
    ASSERT_EQ(audit().size(), 2U);
    EXPECT_EQ(audit()[1].outcome, "executed");
    EXPECT_EQ(audit()[1].details.at("result"), "Work");
    EXPECT_EQ(pending().size(), 1U);
}

TEST_F(OutputTest, theCatalogueIsPublishedInOneOrder)
{
    const auto records = nlohmann::ordered_json::parse(mervo({"tools", "--json"}).out);
    std::string ids;
    for (const auto& record : records)
        ids += record["id"].get<std::string>() + "\n";
    EXPECT_EQ(mervo({"tools", "--ids"}).out, ids);

    const std::string one = mervo({"tools", "mail.send", "--json"}).out;
    EXPECT_THAT(one, StartsWith(R"([{"id":"mail.send","effect":"destructive","summary":)"));
    EXPECT_THAT(one, HasSubstr(R"("arguments":[{"name":"to","required":true,)"));
    EXPECT_THAT(mervo({"tools", "mail.send", "--arguments"}).out, StartsWith("to\nsubject\nbody\n"));
    EXPECT_THAT(mervo({"tools", "mail.sned"}).err, HasSubstr("did you mean mail.send"));
}

TEST_F(OutputTest, theListForPeopleIsWrappedAndGroupedByFamily)
{
    std::set<std::string> published;
    for (const auto& tool : nlohmann::json::parse(mervo({"tools", "--json"}).out))
        published.insert(tool["id"]);
    const auto check = [&](const std::string& text, std::size_t width) {
        std::set<std::string> families, ids;
        std::istringstream lines(text);
        for (std::string line, family; std::getline(lines, line);) {
            if (line.ends_with('\r'))
                line.pop_back();
            EXPECT_LE(platform::countCharacters(line), width) << line;
            if (line.empty() || line.starts_with("    "))
                continue;
            const std::string id = line.substr(0, line.find(' '));
            EXPECT_TRUE(ids.insert(id).second) << id;
            if (const std::string now = id.substr(0, id.find('.')); now != family) {
                EXPECT_TRUE(families.insert(family = now).second) << id << " stands apart from its family";
            }
        }
        EXPECT_EQ(ids, published);
    };
    check(mervo({"tools"}).out, 80);
    check(onTerminal({"tools"}, {}, 64).out, 64);
    EXPECT_THAT(mervo({"tools"}).out,
        HasSubstr(
            "mail.accounts (read): List every Mail.app account and its mailboxes. Read-only -\n    CALL THIS FIRST"));
}

} // namespace mervo::test
