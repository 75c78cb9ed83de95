#include "platform/desk/mail/Maildir.h"

#include "platform/desk/mail/MailFolders.h"
#include "platform/desk/mail/MailboxName.h"
#include "platform/desk/mail/MaildirFlags.h"
#include "platform/desk/mail/SpecialMailbox.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(MaildirName, partsBaseFromFlags)
{
    constexpr std::tuple<const char*, const char*, MaildirFlags> cases[] = {
        {"1.2.host:2,FS", "1.2.host", {.flagged = true, .seen = true}},
        {"1.2.host:2,", "1.2.host", {}},
        {"1.2.host", "1.2.host", {}},
        {"1.2.host,S=5:2,DFP", "1.2.host,S=5", {.draft = true, .flagged = true, .passed = true}},
        {"1.2.host:2,RaTz", "1.2.host", {.replied = true, .trashed = true}}, // and keywords of other programs
        {"1.2.host:1,S", "1.2.host:1,S", {}}, // another kind of info
        {"a:2,S:2,F", "a:2,S", {.flagged = true}},
    };
    for (const auto& [name, base, flags] : cases) {
        const MaildirName split = splitMaildirName(name);
        EXPECT_EQ(split.base, base) << name;
        EXPECT_EQ(maildirFlags(split.info), flags) << name;
        EXPECT_EQ(MaildirFlags::fromBits(flags.bits()), flags) << name;
    }
}

TEST(MailboxName, isModifiedUtf7OnDisk)
{
    using Names = std::initializer_list<std::pair<const char*, const char*>>;
    for (const auto& [onDisk, name] : Names{{"Sent", "Sent"}, {"Entw&APw-rfe", "Entwürfe"}, {"R&-D", "R&D"},
             {"&ZeVnLIqe-", "日本語"}, {"&2D3eAA-", "😀"}, {"a&AC4-b", "a.b"}}) {
        EXPECT_EQ(decodeMailboxComponent(onDisk), name);
        EXPECT_EQ(encodeMailboxComponent(name), onDisk);
    }
    for (const auto& [onDisk, name] : Names{// what the desk would not write so
             {"R&D", "R&D"}, // not well formed: itself
             {"&AC8-", "&AC8-"}, // would be a "/"
             {"&AA-", "&AA-"}, // cut off
             {"&2D0-", "&2D0-"}, // half a character
             {"Réunion", "Réunion"}, // plain UTF-8 of another program
             {"caf\xE9", "caf\xEF\xBF\xBD"}, {"two\nlines", "two lines"}}) // a list of mailboxes is lines
        EXPECT_EQ(decodeMailboxComponent(onDisk), name);
}

std::vector<std::string> names(const MailAccountSettings& account)
{
    std::vector<std::string> result;
    for (const MailFolder& folder : listMailFolders(account))
        result.push_back(folder.name);
    return result;
}

TEST(MailFolders, standInboxFirstAndParentsBeforeChildren)
{
    const test::TempDir dir;
    MailAccountSettings account;
    account.root = dir / "plus";
    for (const char* folder : {"", ".Work", ".Work.A", ".Work-old", ".Entw&APw-rfe", ".Lists.Only.Child"})
        createMaildir(account.root / folder);
    fs::create_directories(account.root / ".git" / "objects"); // no mailbox
    test::writeFile(account.root / ".Broken" / "cur", "a file where a folder should be");
    test::writeFile(account.root / ".notes", "a file");
    EXPECT_THAT(
        names(account), ElementsAre("INBOX", "Broken", "Entwürfe", "Lists/Only/Child", "Work", "Work/A", "Work-old"));
    EXPECT_EQ(mailFolderPath(account, "New/Größe.1"), account.root / ".New.Gr&APYA3w-e&AC4-1");
    EXPECT_EQ(mailFolderPath(account, "../etc"), account.root / ".&AC4ALg-.etc");

    account.root = dir / "nested";
    account.layout = MailLayout::nested;
    for (const char* folder : {"INBOX", "Work/A", "Work/A/B", "Archive"})
        createMaildir(account.root / folder);
    fs::create_directory_symlink(account.root, account.root / "Archive" / "loop");
    EXPECT_THAT(names(account), ElementsAre("INBOX", "Archive", "Work/A", "Work/A/B"));

    account.root = dir / "missing";
    EXPECT_THAT(names(account), ElementsAre("INBOX"));
    EXPECT_EQ(specialMailbox(account, SpecialMailbox::drafts), "Drafts");
}

TEST(Maildir, deliversWholeOrNotAtAll)
{
    const test::TempDir dir;
    createMaildir(dir / "m", MaildirKind::plusPlusFolder);
    EXPECT_TRUE(fs::exists(dir / "m" / "maildirfolder"));
    const fs::path delivered =
        deliverToMaildir(dir / "m", "DS", [](int descriptor) { ASSERT_EQ(write(descriptor, "x", 1), 1); });
    EXPECT_THAT(delivered.filename().string(), HasSubstr(":2,DS"));
    EXPECT_EQ(test::readFile(delivered), "x");
    EXPECT_THROW(deliverToMaildir(dir / "m", "",
                     [](int descriptor) {
                         ASSERT_EQ(write(descriptor, "half", 4), 4);
                         throw MailError("the disk is full");
                     }),
        MailError);
    EXPECT_THROW(deliverToMaildir(dir / "gone", "", [](int) {}), MailError);
    EXPECT_EQ(listMaildir(dir / "m").size(), 1U);
    EXPECT_TRUE(fs::is_empty(dir / "m" / "tmp"));
}

TEST(Maildir, listsFilesWithAnyNameAndSeesAMovingMessageOnce)
{
    const test::TempDir dir;
    createMaildir(dir / "m");
    for (const char* name : {"cur/1:2,S", "new/1", "new/2", "cur/\xFF\xFE odd:2,", "cur/.hidden"})
        test::writeFile(dir / "m" / name, "x");
    fs::create_directory(dir / "m" / "cur" / "folder");
    std::set<std::string> found;
    for (const MaildirEntry& entry : listMaildir(dir / "m"))
        found.insert(entry.fileName + (entry.isNew ? " new" : ""));
    EXPECT_THAT(found, ElementsAre("1:2,S", "2 new", "\xFF\xFE odd:2,"));
    EXPECT_EQ(findMessage(dir / "m", "1"), dir / "m" / "cur/1:2,S");
    EXPECT_EQ(findMessage(dir / "m", "3"), "");
}

} // namespace
} // namespace mervo::desk
