#include "platform/folders.h"
#include "platform/unified_log.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <stdlib.h>

namespace mervo::platform {
namespace {

TEST(Folders, aLeadingTildeIsAHome)
{
    ::setenv("HOME", "/home/somebody", 1);
    const passwd* root = ::getpwnam("root");
    ASSERT_NE(root, nullptr);
    const std::string rootHome = root->pw_dir;
    const std::pair<const char*, std::string> cases[]{{"~", "/home/somebody"}, {"~/x", "/home/somebody/x"},
        {"~//x", "/home/somebody/x"}, {"~root", rootHome}, {"~root/x", rootHome + "/x"},
        {"~nobody-of-this-name/x", "~nobody-of-this-name/x"}, {"/a/~", "/a/~"}, {"", ""}, {"a~", "a~"}};
    for (const auto& [text, path] : cases)
        EXPECT_EQ(expandTilde(text), path) << text;
}

TEST(Folders, homeAndDataFollowTheEnvironment)
{
    ::setenv("HOME", "/home/somebody", 1);
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(applicationSupport(), "/home/somebody/.local/share");
    ::setenv("XDG_DATA_HOME", "relative", 1);
    EXPECT_EQ(applicationSupport(), "/home/somebody/.local/share") << "only an absolute path counts";
    ::setenv("XDG_DATA_HOME", "/data", 1);
    EXPECT_EQ(applicationSupport(), "/data");
    ::setenv("HOME", "", 1);
    EXPECT_TRUE(userHome().is_absolute());
}

TEST(UnifiedLog, neverWritesToTheTerminalAndTakesAnything)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    logError("Test", "");
    logError("Test", "MESSAGE\nPRIORITY=0\n\xFF\x01%s%n");
    logError("Test", std::string(5'000'000, 'x'));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace mervo::platform
