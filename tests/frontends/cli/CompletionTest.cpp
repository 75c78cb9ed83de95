#include "tests/frontends/cli/Cli.h"

namespace mervo::test {

/// What bash offers, one candidate on a line. Bash hands over words that are split at "=".
class CompletionTest : public Cli {
protected:
    std::string offered(const std::vector<std::string>& words) const
    {
        return shell("source " MERVO_SOURCE_DIR "/resources/completions/mervo.bash || exit\n"
                     "COMP_WORDS=(\"$0\" \"$@\"); COMP_CWORD=$#; _mervo\n"
                     "for word in \"${COMPREPLY[@]}\"; do echo \"$word\"; done",
            words)
            .out;
    }
};

TEST_F(CompletionTest, offersWhatTheProgramKnows)
{
    EXPECT_EQ(offered({"au"}), "autonomy\nauto-run\nauto-done\n");
    EXPECT_EQ(offered({"run", "mail.se"}), "mail.search\nmail.send\n");
    EXPECT_EQ(offered({"explain", "how"}), "how_it_works\n");
    EXPECT_EQ(offered({"run", "mail.send", "to", "=", "x", "s"}), "subject=\n");
    EXPECT_EQ(offered({"run", "mail.send", "to", "=", "x", "t"}), "");
    EXPECT_EQ(offered({"run", "mail.send", "bo"}), "body=\nbody-file=\n");
    EXPECT_EQ(offered({"run", "mail.send", "--"}), "--json\n--help\n");
    EXPECT_EQ(offered({"run", "no.such", "x"}), "");
    EXPECT_EQ(offered({"tools", "auto.r"}), "auto.run\nauto.rm\n");
    EXPECT_EQ(offered({"autonomy", "p"}), "panic\n");
    EXPECT_EQ(offered({"secret", ""}), "set\ntest\n");
}

TEST_F(CompletionTest, offersFilesForABodyAndWaitingActions)
{
    writeFile(folder() / "long text.txt", "");
    const std::string begun = (folder() / "long").string();
    EXPECT_EQ(offered({"run", "mail.send", "body-file", "=", begun}), (folder() / "long text.txt").string() + "\n");
    EXPECT_EQ(offered({"run", "mail.send", "subject", "=", begun}), "");
    ASSERT_EQ(mervo(send()).status, 0);
    EXPECT_EQ(offered({"pending", ""}), pending()[0].id + "\n");
    EXPECT_FALSE(std::filesystem::exists(home() / "long"));
    EXPECT_EQ(offered({"auto-run", ""}), "");
    for (const char* name : {"night", "noon"})
        writeFile(home() / "automations" / name / "loop.json", "{}");
    EXPECT_EQ(offered({"auto-run", "n"}), "night\nnoon\n");
    EXPECT_EQ(offered({"run", "auto.log", "name", "=", "ni"}), "night\n");
    EXPECT_EQ(offered({"run", "auto.log", "name", "="}), "night\nnoon\n");
    EXPECT_EQ(offered({"run", "mail.send", "name", "=", "ni"}), "");
}

TEST_F(CompletionTest, everyShellKnowsEveryCommand)
{
    std::istringstream page(mervo({"help"}).out);
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("  ") || line.starts_with("  mervo"))
            continue;
        const std::string name = line.substr(2, line.find(' ', 2) - 2);
        for (const char* file :
            {"completions/mervo.bash", "completions/_mervo", "completions/mervo.fish", "man/mervo.1"})
            EXPECT_THAT(readFile(std::string(MERVO_SOURCE_DIR "/resources/") + file), testing::HasSubstr(name));
    }
}

} // namespace mervo::test
