#include "core/foundation/ConfigDir.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace mervo {
namespace {

namespace fs = std::filesystem;

TEST(ConfigDir, followsTheEnvironment)
{
    ::setenv("HOME", "/home/somebody", 1);
    ::unsetenv("XDG_DATA_HOME");
    const std::pair<const char*, fs::path> cases[]{{nullptr, "/home/somebody/mervo"}, {"", "/home/somebody/mervo"},
        {"~/elsewhere", "/home/somebody/elsewhere"}, {"~", "/home/somebody"}, {"/srv/m", "/srv/m"},
        {"/srv/m/", "/srv/m"}, {"/", "/"}, {"here", fs::current_path() / "here"}};
    for (const auto& [value, expected] : cases) {
        value == nullptr ? ::unsetenv("MERVO_HOME") : ::setenv("MERVO_HOME", value, 1);
        EXPECT_EQ(ConfigDir::url(), expected) << (value == nullptr ? "unset" : value);
    }
    ::setenv("MERVO_HOME", "/srv/m", 1);
    EXPECT_EQ(ConfigDir::databaseURL(), "/srv/m/mervo.sqlite");
    EXPECT_EQ(ConfigDir::legacySupportURL(), "/home/somebody/.local/share/mervo") << "no matter where the home is";
}

TEST(ConfigDir, makesTheHomePrivateEachTime)
{
    const test::TempDir dir;
    ::setenv("MERVO_HOME", (dir / "a/home").c_str(), 1);
    ConfigDir::url();
    EXPECT_TRUE(test::tree(dir.path()).empty()) << "asking for the place creates nothing";
    ConfigDir::ensureExists();
    fs::permissions(dir / "a/home", fs::perms(0755));
    test::writeFile(dir / "a/home/kept", "kept");
    ConfigDir::ensureExists();
    EXPECT_EQ(fs::status(dir / "a/home").permissions(), fs::perms::owner_all);
    EXPECT_EQ(test::readFile(dir / "a/home/kept"), "kept");
    DataProtection::secure(dir / "missing"); // goes to the log, and on
}

} // namespace
} // namespace mervo
