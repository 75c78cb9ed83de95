#include "platform/desk/mail/MailStore.h"

#include "tests/support/Files.h"

#include <chrono>
#include <gmock/gmock.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::ThrowsMessage;

class MailStoreTest : public testing::Test {
protected:
    void deliver(int count)
    {
        createMaildir(account().root);
        for (int i = 0; i < count; ++i)
            test::writeFile(account().root / "cur" / (std::to_string(i) + ".x:2,"), "Subject: x\n\n");
    }

    std::shared_ptr<const MailboxSnapshot> look(MailLook::OwnChanges changes = MailLook::OwnChanges::end)
    {
        return store_.messages(account(), account().root, changes);
    }

    const MailAccountSettings& account() const { return store_.accounts().front(); }

    test::TempDir folder_;
    MailStore store_{{{.name = "Work", .addresses = {"me@desk.example"}, .root = folder_ / "mail"}}, folder_ / "cache"};
};

TEST_F(MailStoreTest, changesThousandsThatAnotherRenamedWithOneListing)
{
    constexpr int kMessages = 2000;
    deliver(kMessages);
    const auto messages = look();
    for (const MessageRecord& message : messages->messages()) {
        fs::rename(account().root / "cur" / message.fileName(),
            account().root / "cur" / (std::string(message.base()) + ":2,S"));
    }

    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i)
        listMaildir(account().root);
    const auto ofTwentyListings = std::chrono::steady_clock::now() - start;
    for (const MessageRecord& message : messages->messages())
        store_.change(*messages, message, {.flagged = true});
    EXPECT_LT(std::chrono::steady_clock::now() - start - ofTwentyListings, ofTwentyListings * (kMessages / 20 / 4));

    for (const MaildirEntry& entry : listMaildir(account().root))
        EXPECT_THAT(entry.fileName, testing::EndsWith(":2,FS"));
}

TEST_F(MailStoreTest, knowsItsOwnChangesWithoutANewLookAndLooksAnewWhenAsked)
{
    deliver(3);
    const auto before = look();
    const MessageRecord& first = before->messages()[0];
    const MessageRecord& second = before->messages()[1];
    store_.change(*before, first, {.seen = true});
    store_.change(*before, first, {.colour = 2});
    store_.remove(account(), *before, second);
    EXPECT_THAT(store_.entry(*before, first).fileName, testing::EndsWith(":2,FSa"));
    EXPECT_THROW(store_.entry(*before, second), MessageGone);
    EXPECT_THROW(store_.change(*before, second, {.seen = true}), MessageGone);
    EXPECT_EQ(look(MailLook::OwnChanges::keep), before);

    const auto after = look();
    EXPECT_EQ(after->messages().size(), 2U);
    EXPECT_EQ(after->withBase(first.base())->id(), first.id()) << "a rename keeps the id";
    EXPECT_THROW(store_.entry(*before, second), MessageGone) << "an old handle after a new look";
    store_.change(*before, first, {.seen = false});
    EXPECT_THAT(store_.entry(*before, first).fileName, testing::EndsWith(":2,Fa"));
}

TEST_F(MailStoreTest, leavesAMessageWhereItIsWhenItCannotGo)
{
    deliver(2);
    const auto messages = look();
    const MessageRecord& message = messages->messages()[0];
    EXPECT_THAT(
        [&] {
            store_.move(*messages, message, {"Gone", account().root / ".Gone"});
        },
        ThrowsMessage<MailError>(HasSubstr(".Gone: No such file or directory.")));
    EXPECT_TRUE(fs::exists(account().root / "cur" / message.fileName()));

    fs::remove(account().root / "cur" / message.fileName());
    EXPECT_THROW(store_.bytes(*messages, message), MessageGone);
    EXPECT_THROW(store_.remove(account(), *messages, message), MessageGone);
    EXPECT_EQ(listMaildir(account().root).size(), 1U);
}

} // namespace
} // namespace mervo::desk
