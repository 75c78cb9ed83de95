#include "core/feedback/FeedbackStore.h"
#include "core/feedback/AskService.h"
#include "core/feedback/FeedbackDB.h"
#include "core/foundation/Timestamps.h"
#include "tests/support/Files.h"

#include <atomic>
#include <gmock/gmock.h>
#include <limits>
#include <thread>

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kNow = "2026-03-01T12:00:00Z";
constexpr auto kPast = "2026-03-01T11:59:59Z";
constexpr auto kLater = "2026-03-01T12:00:01Z";

FeedbackItem item(std::string id, FeedbackItem::Kind kind, std::optional<std::string> automation = std::nullopt)
{
    FeedbackItem made;
    made.id = std::move(id);
    made.kind = kind;
    made.text = "text of " + made.id;
    made.automation = std::move(automation);
    made.createdAt = "2026-02-01T00:00:0" + std::to_string(made.id.size()) + "Z";
    made.source = "conversation";
    if (kind == FeedbackItem::Kind::question)
        made.channel = "cockpit";
    return made;
}

std::vector<std::string> ids(const std::vector<FeedbackItem>& items)
{
    std::vector<std::string> list;
    for (const auto& one : items)
        list.push_back(one.id);
    return list;
}

class Feedback : public testing::Test {
protected:
    using Kind = FeedbackItem::Kind;
    std::shared_ptr<MervoDB> mervo = MervoDB::inMemory();
    FeedbackDB db{mervo};
};

TEST_F(Feedback, keepsEveryField)
{
    FeedbackItem whole = item("0a1b2c3d", Kind::question, "triage");
    whole.handle = "ref";
    whole.answer = "yes; '\"";
    whole.answeredAt = kPast;
    whole.injectedAt = kNow;
    whole.expiresAt = kLater;
    db.add(whole);
    EXPECT_THAT(db.recent(std::nullopt, 10, kNow), ElementsAre(whole));

    FeedbackItem other = item("0a1b2c3d", Kind::directive);
    db.add(other); // the id is taken: nothing happens
    EXPECT_THAT(db.recent(std::nullopt, 10, kNow), ElementsAre(whole));
}

TEST_F(Feedback, reachesTheRunsThatItIsFor)
{
    db.add(item("d", Kind::directive));
    db.add(item("vv", Kind::verdict, "triage"));
    db.add(item("ddd", Kind::directive, "digest"));
    db.add(item("qqqq", Kind::question, "triage"));
    db.add(item("qqqqq", Kind::question)); // asked outside of a run: nobody's answer
    EXPECT_THAT(ids(db.pendingInjection("triage", kNow)), ElementsAre("d", "vv")) << "an open question reaches no run";

    EXPECT_TRUE(db.answer("qqqq", "first", kNow));
    EXPECT_FALSE(db.answer("qqqq", "second", kLater)) << "the first answer stays";
    EXPECT_TRUE(db.answer("qqqqq", "x", kNow));
    EXPECT_FALSE(db.answer("unknown", "x", kNow));
    const auto told = db.pendingInjection("triage", kNow);
    EXPECT_THAT(ids(told), ElementsAre("d", "vv", "qqqq"));
    EXPECT_EQ(told.back().answer, "first");
    EXPECT_EQ(told.back().answeredAt, kNow);
    EXPECT_THAT(ids(db.pendingInjection("digest", kNow)), ElementsAre("d", "ddd"));

    db.markInjected({}, kNow);
    db.markInjected({"qqqq", "d"}, kNow);
    db.markInjected({"qqqq"}, kLater);
    EXPECT_THAT(ids(db.pendingInjection("triage", kNow)), ElementsAre("d", "vv"))
        << "an answer comes once, a directive again and again";
    for (const auto& one : db.recent("triage", 10, kNow)) {
        if (one.id == "qqqq") {
            EXPECT_EQ(one.injectedAt, kNow) << "the first time stays";
        }
    }
}

TEST_F(Feedback, expiresAtTheSecond)
{
    const struct {
        std::optional<std::string> expires;
        bool alive;
    } cases[] = {{std::nullopt, true}, {kLater, true}, {kNow, false}, {kPast, false}};
    for (const auto& [expires, alive] : cases) {
        FeedbackDB fresh(MervoDB::inMemory());
        auto directive = item("d", Kind::directive);
        auto question = item("q", Kind::question);
        directive.expiresAt = question.expiresAt = expires;
        fresh.add(directive);
        fresh.add(question);
        const std::string name = expires.value_or("never");
        EXPECT_EQ(fresh.pendingInjection("any", kNow).size(), alive ? 1U : 0U) << name;
        EXPECT_EQ(fresh.openQuestions("cockpit", kNow).size(), alive ? 1U : 0U) << name;
        EXPECT_EQ(fresh.recent(std::nullopt, 10, kNow).size(), alive ? 2U : 0U) << name;
        EXPECT_EQ(fresh.gc("0", kNow), alive ? 0 : 2) << name;
    }
}

TEST_F(Feedback, listsAndCleans)
{
    db.add(item("q", Kind::question, "triage"));
    db.add(item("qq", Kind::question));
    db.add(item("ddd", Kind::directive, "digest"));
    EXPECT_THAT(ids(db.openQuestions("cockpit", kNow)), ElementsAre("q", "qq")) << "oldest first";
    EXPECT_THAT(db.openQuestions("mail", kNow), IsEmpty());
    EXPECT_THAT(ids(db.recent(std::nullopt, 2, kNow)), ElementsAre("ddd", "qq")) << "newest first";
    EXPECT_THAT(ids(db.recent("triage", 10, kNow)), ElementsAre("qq", "q"));

    db.answer("q", "a", kNow);
    db.markInjected({"q", "ddd"}, kNow);
    EXPECT_EQ(db.gc("2026-02-01T00:00:01Z", kNow), 0) << "not older than the time to keep";
    EXPECT_EQ(db.gc("2026-02-01T00:00:09Z", kNow), 1) << "questions that a run has seen, and nothing else";
    db.remove("qq");
    db.remove("unknown");
    EXPECT_THAT(ids(db.recent(std::nullopt, 10, kNow)), ElementsAre("ddd"));
}

TEST_F(Feedback, worksWithoutADatabaseAndWithOneThatFails)
{
    mervo->database().execute("DROP TABLE feedback");
    for (FeedbackStore store : {FeedbackStore(nullptr), FeedbackStore(mervo)}) {
        store.add(item("d", Kind::directive));
        store.markInjected({"d"});
        store.remove("d");
        EXPECT_FALSE(store.answer("d", "a"));
        EXPECT_EQ(store.gc(30), 0);
        EXPECT_THAT(store.openQuestions("mail"), IsEmpty());
        EXPECT_THAT(store.pendingInjection("triage"), IsEmpty());
        EXPECT_THAT(store.recent(std::nullopt, 5), IsEmpty());
    }
}

TEST_F(Feedback, answersAQuestionOnceHoweverManyTry)
{
    test::TempDir home;
    {
        MervoDB file(home.path());
        FeedbackDB(std::make_shared<MervoDB>(home.path())).add(item("q", Kind::question));
    }
    std::atomic<int> answered = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            FeedbackStore own(std::make_shared<MervoDB>(home.path()));
            answered += own.answer("q", std::to_string(i)) ? 1 : 0;
        });
    }
    threads.clear();
    EXPECT_EQ(answered, 1);
}

TEST_F(Feedback, recordsAVerdict)
{
    FeedbackStore store(mervo);
    AskService service(store);
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(1);
    service.recordVerdict("refus de mail.send", std::nullopt, 168);
    service.recordVerdict("for one", "triage", std::nullopt);
    service.recordVerdict("as good as never", std::nullopt, std::numeric_limits<std::int64_t>::max());
    const auto told = store.pendingInjection("triage");
    ASSERT_EQ(told.size(), 3U);
    for (const auto& one : told) {
        EXPECT_EQ(one.kind, Kind::verdict);
        EXPECT_EQ(one.source, "cockpit");
        EXPECT_THAT(one.id, testing::MatchesRegex("[0-9a-f]{8}"));
        if (one.text != "refus de mail.send")
            continue;
        EXPECT_EQ(one.automation, std::nullopt);
        const auto made = Timestamps::date(one.createdAt);
        const auto gone = Timestamps::date(one.expiresAt.value_or(""));
        ASSERT_TRUE(made && gone);
        EXPECT_GE(*made, before);
        EXPECT_EQ(*gone - *made, std::chrono::hours(168));
    }
}

} // namespace
} // namespace mervo
