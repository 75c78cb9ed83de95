#include "tests/frontends/cli/Cli.h"

namespace mervo::test {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using HelpTest = Cli;

const std::vector<std::string> kNames{"run", "tools", "explain", "pending", "autonomy", "auto-run", "auto-done",
    "permissions", "bootstrap-permissions", "secret", "doctor"};

TEST_F(HelpTest, everyCommandHasItsPage)
{
    const std::string all = mervo({"--help"}).out;
    EXPECT_EQ(mervo({"help"}).out, all);
    for (const std::string& name : kNames) {
        EXPECT_THAT(all, HasSubstr("\n  " + name + " "));
        const Ended page = mervo({"help", name});
        EXPECT_EQ(page.status, 0);
        EXPECT_THAT(page.out, StartsWith("usage: mervo " + name));
        EXPECT_EQ(mervo({name, "nonsense=1", "--wrong", "--help"}).out, page.out);
        EXPECT_THAT(page.out, Not(HasSubstr("\n\n\n")));
        EXPECT_THAT(page.out, HasSubstr("\n\nOptions:\n"));
        EXPECT_THAT(page.out, Not(testing::ContainsRegex("\n[^\n]{81,}"))) << "wider than a terminal";
    }
    EXPECT_THAT(mervo({"--version"}).out, testing::MatchesRegex("mervo [0-9.]+\n"));
}

TEST_F(HelpTest, nothingHereDecidesForThePerson)
{
    for (const std::string name : {"config", "set", "raise", "rnu", ""}) {
        const Ended run = mervo({name, "0000000A"});
        EXPECT_EQ(run.status, 2) << name;
        EXPECT_THAT(run.err, StartsWith("error: there is no command"));
    }
    for (const std::string name : {"approve", "reject", "deny", "allow", "rules", "rule", "audit"}) {
        const Ended run = mervo({name, "0000000A"});
        EXPECT_EQ(run.status, 2) << name;
        EXPECT_THAT(run.err, StartsWith("error: \"" + name + "\" is for a person, in the cockpit (mervo-cockpit); "));
    }
    EXPECT_THAT(mervo({"rnu"}).err, HasSubstr("did you mean run?"));
    EXPECT_EQ(mervo({}).status, 2);
    EXPECT_EQ(mervo({"help", "nothing"}).status, 2);
}

} // namespace mervo::test
