#include "platform/desk/addressbook/ContactCache.h"

#include "tests/support/Files.h"

#include <cstdlib>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr platform::FileStamp kFolderStamp{1, 9, 4096, 90};

/// Cards that need no file, with stamps of long ago.
class ContactCacheTest : public testing::Test {
protected:
    ContactCacheTest() { ::setenv("XDG_CACHE_HOME", cacheHome_.path().c_str(), 1); }

    static VdirItem item(const char* name, std::int64_t changed) { return {name, {2, 3, 50}, {1, 2, 3, changed}}; }
    static std::vector<VdirCollection> listed(std::vector<VdirItem> items)
    {
        return {{.folder = "/root/home", .items = std::move(items), .stamp = kFolderStamp}};
    }

    static Contact ann()
    {
        return {"u1", "Ann", {"A", "N", "", "", "Org", "Dep", "", "note\n2"},
            {{{"work", "a@x"}, {"", "b@x"}}, {{"x", "5"}}, {}}, "1985-04-12", true, false, {}};
    }
    static Contact group() { return {"", "Team", {}, {}, "", false, true, {"u1", "u2"}}; }

    static void keepTwo()
    {
        const auto all = listed({item("a.vcf", 10), item("b.vcf", 20)});
        ContactCache cache("/root");
        ReadCards two{.contacts = {}, .why = {}, .isRead = true};
        two.contacts.emplace_back(ann());
        two.contacts.emplace_back(group());
        cache.keep(all[0].items[0], two);
        cache.keep(all[0].items[1], {.contacts = {}, .why = "it holds no card", .isRead = true});
        cache.write(all);
    }

    /// What a new look finds of a file, all of it as it was: "Ann Team"; "none" for what is not known.
    static std::string found(const char* name, std::int64_t changed)
    {
        ContactCache cache("/root");
        const auto cards = cache.find("/root/home", item(name, changed));
        std::string text = cards ? cards->why : "none";
        for (std::size_t i = 0; cards && i < cards->contacts.size(); ++i) {
            const LazyContact& each = cards->contacts[i];
            text += fmt::format("{}{}", each.name(), each.isGroup());
            text += packed(*each) == packed(i == 0 ? ann() : group()) ? " whole;" : " other;";
        }
        return text;
    }

    fs::path file() const { return fs::directory_iterator(cacheHome_ / "mervo-desk/contacts")->path(); }

    const test::TempDir cacheHome_;
};

constexpr const char* kBoth = "Annfalse whole;Teamtrue whole;";

TEST_F(ContactCacheTest, knowsAFileByItsPathAndStampAlone)
{
    keepTwo();
    EXPECT_EQ(found("a.vcf", 10), kBoth);
    EXPECT_EQ(found("b.vcf", 20), "it holds no card");
    for (const auto& [name, changed] : {std::pair{"a.vcf", 11}, {"b.vcf", 10}, {"c.vcf", 10}})
        EXPECT_EQ(found(name, changed), "none") << "another one, or written again by a program that keeps the time";
    const ContactCache cache("/root");
    const auto names = cache.names("/root/home", kFolderStamp);
    ASSERT_TRUE(names && names->size() == 2);
    EXPECT_STREQ(names->at(1).data(), "b.vcf");
    EXPECT_FALSE(cache.names("/root/home", {1, 9, 4096, 91}));
}

TEST_F(ContactCacheTest, dropsWhatIsGoneAndTrustsNothingYoung)
{
    keepTwo();
    {
        const auto all = listed({item("b.vcf", 20), item("young.vcf", std::int64_t{1} << 62)});
        ContactCache cache("/root");
        cache.keep(all[0].items[1], {.contacts = {}, .why = "secret", .isRead = true});
        cache.write(all);
        EXPECT_EQ(found("young.vcf", std::int64_t{1} << 62), "none");
        cache.write(listed({item("b.vcf", 20)}));
    }
    EXPECT_EQ(found("b.vcf", 20), "it holds no card");
    const std::string bytes = test::readFile(file());
    EXPECT_EQ(bytes.find("1985"), std::string::npos) << "a card that is gone";
    EXPECT_EQ(bytes.find("secret"), std::string::npos);
}

TEST_F(ContactCacheTest, neverGivesWhatWasNotWritten)
{
    keepTwo();
    const std::string whole = test::readFile(file());
    for (std::size_t at = 0; at < whole.size(); at += 3) {
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x21);
        for (const std::string& damaged : {bytes, whole.substr(0, at)}) {
            test::writeFile(file(), damaged);
            EXPECT_EQ(found("a.vcf", 10), "none") << at;
        }
    }
}

} // namespace
} // namespace mervo::desk
