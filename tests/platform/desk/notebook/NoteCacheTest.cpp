#include "platform/desk/notebook/NoteCache.h"

#include "tests/support/Files.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

/// Notes that need no file, with stamps of long ago.
class NoteCacheTest : public testing::Test {
protected:
    NoteCacheTest() { ::setenv("XDG_CACHE_HOME", folder_.path().c_str(), 1); }

    static platform::FileStamp stamp(std::int64_t changed) { return {1, 2, 3, changed}; }

    /// What a new look finds, "name/text"; "none" for what is not known.
    static std::string found(std::string_view note, std::int64_t changed)
    {
        NoteCache cache("/root");
        const NoteCache::Known* known = cache.find(note, stamp(changed));
        const auto text = known == nullptr ? std::nullopt : cache.text(*known);
        return text ? std::string(known->name) + '/' + *text : "none";
    }

    void keepTwo() const
    {
        NoteCache cache("/root");
        cache.keep("/root/a.html", stamp(10), 7, "A", std::string("alpha\0text", 10));
        cache.keep("/root/b.md", stamp(20), 8, "B", "");
        cache.write();
    }

    fs::path file() const { return fs::directory_iterator(folder_ / "mervo-desk/notes")->path(); }

    const test::TempDir folder_;
};

TEST_F(NoteCacheTest, knowsANoteByItsPathAndStampAlone)
{
    keepTwo();
    EXPECT_EQ(found("/root/a.html", 10), std::string("A/alpha\0text", 12));
    EXPECT_EQ(found("/root/b.md", 20), "B/");
    EXPECT_EQ(found("/root/a.html", 11), "none");
    EXPECT_EQ(found("/root/b.md", 10), "none");
}

TEST_F(NoteCacheTest, dropsWhatIsGoneAndKeepsWhatWasUsed)
{
    keepTwo();
    {
        NoteCache cache("/root");
        ASSERT_NE(cache.find("/root/b.md", stamp(20)), nullptr);
        cache.keep("/root/new.txt", platform::FileStamp{1, 2, 3, std::int64_t{1} << 62}, 1, "New", "secret");
        cache.write(); // a.html was not asked for, and there is no such file; new.txt may change yet
    }
    EXPECT_EQ(found("/root/a.html", 10), "none");
    EXPECT_EQ(found("/root/b.md", 20), "B/");
    const std::string bytes = test::readFile(file());
    EXPECT_EQ(bytes.find("alpha"), std::string::npos) << "the text of a note that is gone";
    EXPECT_EQ(bytes.find("secret"), std::string::npos);
}

TEST_F(NoteCacheTest, neverGivesWhatWasNotWritten)
{
    keepTwo();
    const std::string whole = test::readFile(file());
    const auto isRightOrNone = [&](const std::string& bytes) {
        test::writeFile(file(), bytes);
        const std::string a = found("/root/a.html", 10), b = found("/root/b.md", 20);
        return (a == "none" || a == std::string("A/alpha\0text", 12)) && (b == "none" || b == "B/");
    };
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x21);
        EXPECT_TRUE(isRightOrNone(bytes)) << "byte " << at;
        EXPECT_TRUE(isRightOrNone(whole.substr(0, at))) << "cut at " << at;
    }
    EXPECT_TRUE(isRightOrNone(whole + "more"));
}

} // namespace
} // namespace mervo::desk
