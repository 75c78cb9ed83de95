#include "core/scripting/DisclaimedRun.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace mervo {
namespace {

TEST(DisclaimedRun, givesStatusAndOutput)
{
    ::setenv("MERVO_TEST_WORD", "inherited", 1);
    struct Case {
        const char* script;
        std::int32_t code;
        std::string output;
    };
    const Case cases[]{{"echo \"$MERVO_TEST_WORD\"", 0, "inherited\n"}, {"echo x; exit 3", 3, "x\n"},
        {"echo x; kill -9 $$", -1, "x\n"}, {"printf '\\377'", 0, ""},
        {"head -c 1000000 /dev/zero | tr '\\0' x", 0, std::string(1'000'000, 'x')}};
    for (const auto& [script, code, output] : cases) {
        const auto result = DisclaimedRun::run("/bin/sh", {"-c", script});
        EXPECT_EQ(result.code, code) << script;
        EXPECT_EQ(result.stdout_, output) << script;
    }
}

TEST(DisclaimedRun, leavesStandardErrorAlone)
{
    testing::internal::CaptureStderr();
    const auto result = DisclaimedRun::run("/bin/sh", {"-c", "echo inherited >&2"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "inherited\n");
    EXPECT_EQ(result.stdout_, "");
}

TEST(DisclaimedRun, whatCannotStartSaysSo)
{
    const auto result = DisclaimedRun::run("/nowhere/program", {});
    EXPECT_EQ(result.code, -1);
    EXPECT_EQ(result.stdout_, "posix_spawn failed (errno 2)");
}

} // namespace
} // namespace mervo
