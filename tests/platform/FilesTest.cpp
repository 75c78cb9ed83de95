#include "platform/files.h"

#include "tests/support/Files.h"
#include "tests/support/SmallFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace mervo::platform {
namespace {

namespace fs = std::filesystem;

TEST(Files, aLinkStaysALink)
{
    const test::TempDir dir;
    fs::create_directories(dir / "dotfiles");
    fs::create_symlink("dotfiles/real.json", dir / "link.json");
    fs::create_symlink("link.json", dir / "second.json");
    EXPECT_FALSE(replaceFile(dir / "second.json", "through two links to nothing yet"));
    EXPECT_FALSE(replaceFile(dir / "link.json", "new"));
    EXPECT_TRUE(fs::is_symlink(dir / "link.json") && fs::is_symlink(dir / "second.json"));
    EXPECT_EQ(test::readFile(dir / "dotfiles/real.json"), "new");
    fs::create_symlink("loop", dir / "loop");
    EXPECT_TRUE(replaceFile(dir / "loop", "x"));
}

TEST(Files, aFullDiskLeavesTheOldFileOrNone)
{
    const test::TempDir dir;
    ASSERT_FALSE(replaceFile(dir / "config.json", "old"));
    const std::string much(200000, 'x');
    std::error_code replaced;
    std::error_code written;
    {
        const test::SmallFiles limit(100000);
        replaced = replaceFile(dir / "config.json", much);
        written = writeInPlace(dir / "action.json", much);
    }
    EXPECT_EQ(replaced.value(), EFBIG);
    EXPECT_EQ(written.value(), EFBIG);
    EXPECT_EQ(test::readFile(dir / "config.json"), "old");
    EXPECT_EQ(test::tree(dir.path()), std::set<std::string>{"config.json"});
}

TEST(Files, whatAnotherHasWrittenIsNeverReplaced)
{
    const test::TempDir dir;
    const fs::path file = dir / "note";
    EXPECT_FALSE(createFile(file, "one"));
    EXPECT_EQ(createFile(file, "two"), std::errc::file_exists);
    fs::permissions(file, fs::perms(0640));
    const auto stamp = fileStamp(file);
    EXPECT_FALSE(replaceUnchanged(file, "two", *stamp));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    EXPECT_EQ(replaceUnchanged(file, "three", *stamp), std::errc::operation_canceled);
    fs::create_directory(dir / "full");
    EXPECT_EQ(renameWithoutReplacing(file, dir / "full"), std::errc::file_exists);
    EXPECT_EQ(test::readFile(file), "two");
    EXPECT_FALSE(renameWithoutReplacing(file, dir / "full/moved"));
    EXPECT_EQ(replaceUnchanged(file, "four", *stamp), std::errc::operation_canceled) << "of one that is gone";
    EXPECT_EQ(test::tree(dir.path()), (std::set<std::string>{"full", "full/moved"}));
}

TEST(Files, onlyRegularFilesAreRead)
{
    const test::TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(readFile(dir / "pipe")) << "and without waiting for a writer";
    EXPECT_FALSE(readFile("/dev/zero"));
    EXPECT_FALSE(readFile(dir.path()));
    EXPECT_FALSE(readFile(dir / "missing"));
    test::writeFile(dir / "bytes", std::string("a\0\xFF\n", 4));
    EXPECT_EQ(readFile(dir / "bytes"), std::string("a\0\xFF\n", 4));
    EXPECT_TRUE(readFile(dir / "bytes", 4));
    std::error_code why;
    EXPECT_FALSE(readFile(dir / "bytes", 3, &why));
    EXPECT_EQ(why, std::errc::file_too_large);
    EXPECT_FALSE(readFile("/proc/self/maps", 1)) << "a file that is longer than it says";
    EXPECT_EQ(readFile("/proc/self/comm")->empty(), false) << "a size of 0 says nothing about what can be read";
}

} // namespace
} // namespace mervo::platform
