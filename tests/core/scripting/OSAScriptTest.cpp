#include "core/scripting/OSAScript.h"

#include "tests/support/Files.h"
#include "tests/support/Program.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <thread>
#include <unistd.h>

namespace mervo {
namespace {

/// Scripts run by the real host; the temporary folder is the test's own.
class OSAScriptRun : public testing::Test {
protected:
    OSAScriptRun() { ::setenv("TMPDIR", dir.path().c_str(), 1); }
    ~OSAScriptRun() override
    {
        EXPECT_TRUE(test::tree(dir.path()).empty()) << "the script's file stays behind";
        ::unsetenv("TMPDIR");
    }
    test::TempDir dir;
};

TEST_F(OSAScriptRun, givesTheResultWithoutBlanksAtItsEnds)
{
    const auto result =
        OSAScript::run("on run argv\nreturn \" \" & item 1 of argv & linefeed & linefeed\nend run", {"text"});
    EXPECT_TRUE(result.ok) << result.error;
    EXPECT_EQ(result.output, "text");
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.code, 0);
}

TEST_F(OSAScriptRun, argumentsArriveAsTheyStand)
{
    for (const std::string argument :
        {"\" & (do shell script \"id\") & \"", "back\\slash \\n", "two\nlines", "'", "é👍", "-e", "x\ty"}) {
        const auto result =
            OSAScript::run("on run argv\nreturn \"[\" & item 2 of argv & \"]\"\nend run", {"", argument});
        EXPECT_EQ(result.output, "[" + argument + "]") << result.error;
    }
}

TEST_F(OSAScriptRun, anErrorIsOneCleanLine)
{
    const auto raised = OSAScript::run("on run argv\nerror \"No such list: \" & item 1 of argv\nend run", {"Work"});
    EXPECT_FALSE(raised.ok);
    EXPECT_EQ(raised.code, 1);
    EXPECT_EQ(raised.output, "");
    EXPECT_EQ(raised.error.rfind("execution error: No such list: Work", 0), 0U) << raised.error;
    EXPECT_EQ(raised.error.find(dir.string()), std::string::npos);
    const auto malformed = OSAScript::run("on run argv\nreturn (1 +\nend run", {});
    EXPECT_FALSE(malformed.ok);
    EXPECT_EQ(malformed.error.rfind("syntax error: ", 0), 0U) << malformed.error;
}

TEST_F(OSAScriptRun, muchComesWholeBothWays)
{
    const std::string much(20'000'000, 'x');
    const auto result = OSAScript::run("on run argv\nset t to item 1 of argv\nreturn t & t\nend run", {much});
    EXPECT_EQ(result.output.size(), 2 * much.size()) << result.error;
}

TEST_F(OSAScriptRun, nobodySeesTheTexts)
{
    std::atomic<bool> done = false;
    std::thread run([&] {
        OSAScript::run("on run argv\ndelay 0.5\nend run -- the script", {"a private word"});
        done = true;
    });
    std::string shown;
    int looks = 0;
    for (; !done; ++looks, ::usleep(2000)) {
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream words(entry.path() / "cmdline");
            for (std::string text; std::getline(words, text);)
                shown += text;
        }
    }
    run.join();
    EXPECT_GT(looks, 5);
    EXPECT_NE(shown.find("osascript"), std::string::npos);
    EXPECT_EQ(shown.find("a private word"), std::string::npos);
    EXPECT_EQ(shown.find("the script"), std::string::npos);
}

TEST_F(OSAScriptRun, whatNoScriptCanReceiveIsRefused)
{
    const auto nul = OSAScript::run("return 1", {"a", std::string("b\0c", 3)});
    EXPECT_FALSE(nul.ok);
    EXPECT_EQ(nul.code, -1);
    EXPECT_EQ(nul.error, "an argument holds a NUL character, which a script cannot receive");
}

TEST(OSAScript, aHostThatIsMissingOrSaysNothingIsSpokenFor)
{
    const test::TempDir bundle;
    const auto program = bundle / "Contents/Tests/lone-script";
    const auto host = bundle / "Contents/Helpers/platform/osascript";
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::copy_file(test::bundle() / "Tests/lone-script", program);
    EXPECT_EQ(test::runProgram(program, {}).out, "0 -1 failed to launch osascript: No such file or directory");
    const std::pair<const char*, const char*> cases[]{
        {"kill -9 $$", "0 -1 the script host was ended by signal 9 (Killed) while it ran; it may have acted"},
        {"echo 'execution error: x' >&2; kill -9 $$", "0 -1 execution error: x"},
        {"exit 3", "0 3 the script host ended with status 3 and said nothing"},
    };
    for (const auto& [script, told] : cases) {
        test::writeProgram(host, std::string("#!/bin/sh\n") + script);
        EXPECT_EQ(test::runProgram(program, {}).out, told);
    }
}

} // namespace
} // namespace mervo
