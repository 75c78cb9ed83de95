#include "tests/frontends/cli/Cli.h"

namespace mervo::test {

using testing::HasSubstr;

using AutoTest = Cli;

TEST_F(AutoTest, endsARunInOneStepOrNotAtAll)
{
    const auto file = folder() / "a.done";
    const auto done = [&](std::vector<std::string> words, const std::filesystem::path& to) {
        words.insert(words.begin(), "auto-done");
        return mervo(words, {{"RONDEL_DONE", to.string()}});
    };
    const std::pair<std::vector<std::string>, std::string> written[]{
        {{}, "0"}, {{"0"}, "0"}, {{"143"}, "143"}, {{"007"}, "007"}, {{"2147483647"}, "2147483647"}};
    for (const auto& [words, text] : written) {
        EXPECT_EQ(done(words, file).status, 0) << text;
        EXPECT_EQ(readFile(file), text);
    }
    for (const std::vector<std::string>& words :
        {std::vector<std::string>{"one"}, {""}, {"1x"}, {"-1"}, {"2147483648"}, {"0", "1"}}) {
        EXPECT_EQ(done(words, file).status, 2) << words[0];
        EXPECT_EQ(readFile(file), "2147483647");
    }
    EXPECT_THAT(done({}, folder() / "none/a.done").err, HasSubstr("could not be ended"));
    EXPECT_THAT(done({}, folder().path()).err, HasSubstr("could not be ended"));
    for (const std::optional<std::string>& unset : {std::optional<std::string>(), std::optional<std::string>("")}) {
        const Ended run = mervo({"auto-done"}, {{"RONDEL_DONE", unset}});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "error: there is no run to end: RONDEL_DONE is not set\n");
    }
    EXPECT_EQ(mervo({"auto-run"}).status, 2);
}

} // namespace mervo::test
