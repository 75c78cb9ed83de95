#include "platform/desk/addressbook/AddressBook.h"

#include "platform/desk/addressbook/CardEdit.h"
#include "tests/support/Files.h"
#include "tests/support/SmallFiles.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace mervo::desk {
namespace {

using test::readFile;
using test::TempDir;
using test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

/// What is read is kept in a cache of the test's own.
class AddressBookCache : public testing::Environment {
    void SetUp() override { ::setenv("XDG_CACHE_HOME", folder_.path().c_str(), 1); }
    const TempDir folder_;
};
[[maybe_unused]] testing::Environment* const kCache = testing::AddGlobalTestEnvironment(new AddressBookCache);

std::string card(const std::string& name, const std::string& more = {})
{
    return "BEGIN:VCARD\nVERSION:3.0\nFN:" + name + "\nN:" + name + ";;;;\n" + more + "END:VCARD\n";
}

std::vector<std::string> names(AddressBook& book)
{
    std::vector<std::string> found;
    for (const auto& each : book.cards())
        found.emplace_back(each->contact.name());
    return found;
}

AddressBook::Change called(const std::string& name)
{
    return [name](ContentDocument& document, ContentDocument::Node node) {
        setContactField(document, node, ContactField::lastName, name);
    };
}

TEST(AddressBook, readsFoldersOfFoldersAndSeveralCardsOfAFile)
{
    const TempDir root;
    writeFile(root / "home/b.vcf", card("Two") + "\n" + card("Three"));
    writeFile(root / "home/a.vcf", card("One", "AGENT:\nBEGIN:VCARD\nFN:Inner\nEND:VCARD\n"));
    writeFile(root / "work/deep/c.vcf", card("Four"));
    writeFile(root / "home/notes.txt", "no card");
    AddressBook book(root.path());
    EXPECT_THAT(names(book), ElementsAre("One", "Two", "Three", "Four"));
    EXPECT_THAT(book.damaged(), testing::IsEmpty());
}

TEST(AddressBook, hidesNothingBehindWhatIsDamaged)
{
    const TempDir root;
    writeFile(root / "a.vcf", "nothing of a card\n");
    writeFile(root / "b.vcf", card("Good") + "BEGIN:VCARD\nFN:Endless\n");
    writeFile(root / "c.vcf", std::string("BEGIN:VCARD\nFN:N\0L\xFF\nEND:VCARD\n", 31));
    writeFile(root / "d.vcf", std::string(17 << 20, 'x'));
    std::filesystem::create_directory(root / "e.vcf");
    ASSERT_EQ(::mkfifo((root / "f.vcf").c_str(), 0600), 0);
    std::string deep;
    for (int level = 0; level < 1000; ++level)
        deep += "BEGIN:VCARD\n";
    writeFile(root / "g.vcf", deep);
    writeFile(root / "h.vcf", card("Long", "PHOTO:" + std::string(5 << 20, 'A') + "\n"));
    AddressBook book(root.path());
    const auto found = names(book);
    EXPECT_THAT(found, testing::IsSupersetOf({"Good", "Long"}));
    std::vector<std::string> damaged;
    for (const auto& each : book.damaged())
        damaged.push_back(each.file.filename());
    EXPECT_THAT(damaged, testing::UnorderedElementsAre("a.vcf", "b.vcf", "d.vcf", "e.vcf", "f.vcf", "g.vcf"));
}

TEST(AddressBook, rewritesOnlyTheCardThatIsMeant)
{
    const TempDir root;
    const std::string first = card("One", "X-ODD;p=\"q\":1\n"), last = card("Three");
    writeFile(root / "all.vcf", "\n" + first + card("Two") + "rubbish\n" + last);
    AddressBook book(root.path());
    const auto two = book.cards().at(1);
    book.edit(two, called("Zwei"));
    EXPECT_THAT(readFile(root / "all.vcf"), HasSubstr("FN:Two")) << "nothing is kept before it is saved";
    book.save();
    const std::string text = readFile(root / "all.vcf");
    EXPECT_TRUE(text.starts_with("\n" + first + "BEGIN:VCARD\nVERSION:3.0\nFN:Zwei\nN:Zwei;;;;\nREV:")) << text;
    EXPECT_TRUE(text.ends_with("rubbish\n" + last)) << text;

    AddressBook again(root.path());
    again.remove(again.cards().at(1));
    again.save();
    EXPECT_EQ(readFile(root / "all.vcf"), "\n" + first + "rubbish\n" + last);
    AddressBook empty(root.path());
    while (!empty.cards().empty())
        empty.remove(empty.cards().front());
    empty.save();
    EXPECT_FALSE(std::filesystem::exists(root / "all.vcf"));
}

TEST(AddressBook, putsNewCardsWhereTheOthersAre)
{
    for (const char* there : {"", "x.vcf", "home/x.vcf"}) {
        const TempDir root;
        if (*there != '\0')
            writeFile(root / there, card("Old"));
        AddressBook book(root.path());
        const auto fresh = book.add();
        book.edit(fresh, called("New"));
        book.save();
        EXPECT_EQ(fresh->file().parent_path().lexically_normal(), (root / there).parent_path().lexically_normal())
            << there;
        EXPECT_THAT(readFile(fresh->file()), HasSubstr("\r\nFN:New\r\n"));
    }
}

TEST(AddressBook, overwritesNoChangeOfAnotherProgram)
{
    const TempDir root;
    writeFile(root / "a.vcf", card("One"));
    writeFile(root / "b.vcf", card("Two"));
    AddressBook book(root.path());
    book.edit(book.cards().at(0), called("Eins"));
    book.edit(book.cards().at(1), called("Zwei"));
    writeFile(root / "b.vcf", card("Theirs"));
    EXPECT_THROW(book.save(), ContactError);
    EXPECT_EQ(readFile(root / "a.vcf"), card("One")) << "all or none";
    EXPECT_EQ(readFile(root / "b.vcf"), card("Theirs"));
    AddressBook late(root.path());
    const auto one = late.cards().at(0);
    writeFile(root / "a.vcf", card("Changed"));
    EXPECT_THAT([&] { late.edit(one, called("x")); }, ThrowsMessage<ContactError>(HasSubstr("another program")));
}

TEST(AddressBook, leavesNothingBehindOnAFullDisk)
{
    const TempDir root;
    writeFile(root / "a.vcf", card("One"));
    AddressBook book(root.path());
    book.edit(book.cards().front(), called("Eins"));
    book.edit(book.add(), called("New"));
    {
        const test::SmallFiles full(20);
        EXPECT_THROW(book.save(), ContactError);
    }
    EXPECT_EQ(readFile(root / "a.vcf"), card("One"));
    AddressBook again(root.path());
    EXPECT_THAT(names(again), ElementsAre("One"));
}

} // namespace
} // namespace mervo::desk
