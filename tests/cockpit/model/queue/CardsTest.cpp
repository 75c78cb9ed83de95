#include "cockpit/model/queue/ActionPresentation.h"
#include "tests/cockpit/model/World.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace mervo {
namespace {

using testing::ElementsAre;

using Cards = test::World;

TEST_F(Cards, keepTheRowsThatStay)
{
    start();
    const QAbstractItemModelTester testers[] = {
        {model->queue()->list(), QAbstractItemModelTester::FailureReportingMode::Fatal, nullptr}};
    QSignalSpy resets(model->queue()->list(), &QAbstractItemModel::modelReset);
    for (const char* id : {"B", "D", "F"})
        queue(draft(id));
    model->reload();
    const QPersistentModelIndex kept = model->queue()->list()->index(1);
    const QString keptKey = key(1);
    for (const char* id : {"A", "C", "E", "G"})
        queue(draft(id));
    PendingStore().remove("B");
    queue(draft("F", "changed"));
    model->reload();
    std::string ids;
    for (int row = 0; row < model->queue()->list()->rowCount(); ++row)
        ids += role(*model->queue()->list(), row, ApprovalListModel::ActionIdRole).toString().toStdString();
    EXPECT_EQ(ids, "ACDEFG");
    EXPECT_TRUE(kept.isValid());
    EXPECT_EQ(kept.data(ApprovalListModel::KeyRole).toString(), keptKey);
    auto later = draft("A");
    later.createdAt = "2026-03-01T09:00:00Z";
    queue(later);
    model->reload();
    EXPECT_EQ(kept.row(), 1);
    EXPECT_EQ(resets.count(), 0);
}

TEST_F(Cards, showEveryArgumentAndNothingAsMarkup)
{
    auto action = draft("A", "<b>\u202Eevil");
    action.args["body"] = std::string(2100, 'x');
    action.args["subjekt"] = "Hi";
    action.preview = "2 message(s)\x1b";
    queue(action);
    start();
    const auto& cards = *model->queue()->list();
    const auto arguments = role(cards, 0, ApprovalListModel::ArgumentsRole).toList();
    ASSERT_EQ(arguments.size(), 4);
    EXPECT_EQ(arguments[1].toMap().value("remark").toString(), "");
    EXPECT_TRUE(arguments[2].toMap().value("hasNoEffect").toBool());
    const QString remark = role(cards, 0, ApprovalListModel::RemarksRole).toString();
    EXPECT_TRUE(remark.startsWith("mail.draft ignores subjekt")) << remark.toStdString();
    EXPECT_EQ(arguments[2].toMap().value("remark").toString(), remark);
    EXPECT_EQ(arguments[0].toMap().value("cutBy").toInt(), 100);
    EXPECT_EQ(arguments[0].toMap().value("shown").toString().size(), 2000);
    EXPECT_EQ(arguments[0].toMap().value("whole").toString().size(), 2100);
    EXPECT_EQ(arguments[1].toMap().value("shown").toString(), "<b><U+202E>evil");
    EXPECT_EQ(role(cards, 0, ApprovalListModel::PreviewRole).toString(), "2 message(s)<U+001B>");
    EXPECT_EQ(role(cards, 0, ApprovalListModel::EmailSubjectRole).toString(), "<b><U+202E>evil");
    EXPECT_TRUE(role(cards, 0, ApprovalListModel::CanOpenInMailRole).toBool());
    model->queue()->openInMail(key());
    EXPECT_THAT(workspace.opened,
        ElementsAre(testing::StartsWith("mailto:a@example.org?subject=%3Cb%3E%E2%80%AEevil&body=xx")));
    model->openSupport();
    EXPECT_THAT(workspace.opened.back(), testing::HasSubstr("?subject=Mervo%20support%20%28"));
}

TEST_F(Cards, followAFileThatChangesWithinOneTickOfTheClock)
{
    QueueReader reader(PendingStore().dir());
    for (int i = 0; i < 500; ++i) {
        const char* subject = i % 2 == 0 ? "two" : "six"; // the same length and file, and mostly the same time
        test::writeFile(home / "pending/A.json", draft("A", subject).encode());
        ASSERT_TRUE(reader.refresh());
        ASSERT_EQ(reader.actions().at(0).args.at("subject"), subject);
        ASSERT_FALSE(reader.refresh());
    }
}

TEST(CardPresentation, tellsTheArgumentsInOneLine)
{
    const std::pair<Args, const char*> cases[] = {{{{"account", "Work"}}, ""}, {{}, ""},
        {{{"zeta", "1"}, {"alpha", "2"}, {"mailbox", "Bills"}, {"olderThan", "30"}, {"from", "x"}, {"account", "W"}},
            "from x · Bills · older 30d · alpha 2 · zeta 1"},
        {{{"hasAttachment", "true"}, {"to", "y"}, {"dest", "Old"}}, "to y · dest Old · hasAttachment true"}};
    for (const auto& [args, line] : cases)
        EXPECT_EQ(ActionPresentation::detailLine(args), line);
}

TEST(CardPresentation, gathersTheMessageThatWouldBeWritten)
{
    const struct {
        const char* tool;
        Args args;
        const char* expected; ///< to|subject|body|can open
    } cases[] = {{"mail.send", {{"to", "a"}}, "none"},
        {"mail.send", {{"to", "a"}, {"subject", "s"}, {"body", "b"}}, "a|s|b|1"},
        {"mail.send", {{"body", "b"}, {"from", "f"}}, "||b|1"},
        {"mail.reply", {{"body", "b"}}, "(original sender)|Re: |b|0"},
        {"mail.replyAll", {{"body", "b"}, {"from", "f"}, {"subjectContains", "bill"}}, "f|Re: bill|b|1"},
        {"mail.reply", {{"body", "b"}, {"to", "t"}, {"subject", "s"}, {"from", "f"}}, "t|s|b|1"}};
    for (const auto& [tool, args, expected] : cases) {
        const auto email = ActionPresentation::email({"A", tool, args, "", "", {}});
        EXPECT_EQ(email
                ? email->to + "|" + email->subject + "|" + email->body + "|" + (email->canOpenInMail ? "1" : "0")
                : "none",
            expected);
    }
}

TEST(CardPresentation, letsNothingOutOfItsFieldInAMailtoUrl)
{
    EXPECT_EQ(ActionPresentation::mailtoUrl({}), "mailto:");
    EXPECT_EQ(ActionPresentation::mailtoUrl({{"to", "a@b,c@d"}, {"subject", ""}}), "mailto:a@b,c@d");
    EXPECT_EQ(
        ActionPresentation::mailtoUrl({{"to", "a@b?bcc=evil@x&y"}, {"subject", "1+1 & é"}, {"body", "x\ny\r\nz#"}}),
        "mailto:a@b%3Fbcc%3Devil@x%26y?subject=1%2B1%20%26%20%C3%A9&body=x%0D%0Ay%0D%0Az%23");
}

TEST(CardPresentation, givesEveryContentAKeyOfItsOwn)
{
    const PendingAction one{"A", "t", {{"a", "bc"}}, "s", "c", std::nullopt};
    std::vector<PendingAction> others(7, one);
    others[0].tool = "tt";
    others[1].args = {{"ab", "c"}};
    others[2].args = {{"a", "b"}, {"c", ""}};
    others[3].summary = "";
    others[4].preview = "";
    others[5].createdAt = "cs";
    others[6].preview = "none";
    std::set<std::string> digests{ActionPresentation::digest(one)};
    for (const auto& other : others)
        EXPECT_TRUE(digests.insert(ActionPresentation::digest(other)).second);
}

} // namespace
} // namespace mervo
