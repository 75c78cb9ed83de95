#include "platform/desk/consent/Consent.h"
#include "tests/support/Files.h"
#include "tests/support/SmallFiles.h"

#include <atomic>
#include <fmt/format.h>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <optional>
#include <thread>

namespace mervo::desk {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

const std::string kMail = "com.apple.mail";

class ConsentTest : public testing::Test {
protected:
    /// A desk in this mode, whose owner gives this answer.
    Consent desk(WhenUndecided mode, Answer answer = Answer::nobody)
    {
        return {record, [mode] { return mode; },
            [this, answer](const std::string& scope) {
                asked.push_back(scope);
                return answer;
            }};
    }
    static void atOnce(int count, const std::function<void(int)>& work)
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < count; ++i)
            threads.emplace_back(work, i);
    }
    void write(std::string_view text) { test::writeFile(record.file(), text); }
    std::string text() { return test::readFile(record.file()); }

    test::TempDir dir{test::memory()};
    ConsentRecord record{dir / "desk/consent.json"};
    std::vector<std::string> asked;
};

TEST_F(ConsentTest, readsTheWordsOfTheRecord)
{
    const std::pair<const char*, Decision> cases[] = {
        {R"({"com.apple.mail": "allowed"})", Decision::allowed},
        {R"({"com.apple.mail": "refused"})", Decision::refused},
        {R"({"com.apple.mail": "restricted"})", Decision::restricted},
        {R"({"com.apple.mail": "write-only"})", Decision::writeOnly},
        {R"({"com.apple.mail": "Allowed"})", Decision::undecided},
        {R"({"com.apple.mail": true})", Decision::undecided},
        {R"({"com.apple.mail": ["allowed"]})", Decision::undecided},
        {R"({"com.apple.Mail": "allowed"})", Decision::undecided},
        {R"({"calendar": "allowed"})", Decision::undecided},
        {"{}", Decision::undecided},
    };
    EXPECT_EQ(record.of(kMail), Decision::undecided) << "no file";
    for (const auto& [written, expected] : cases) {
        write(written);
        EXPECT_EQ(record.of(kMail), expected) << written;
    }
}

TEST_F(ConsentTest, refusesEveryUseWhileTheRecordIsDamaged)
{
    const std::string huge = R"({"com.apple.mail": "allowed", "x": ")" + std::string(2'000'000, 'x') + "\"}";
    for (const std::string& written : {std::string(), std::string(R"({"com.apple.mail": "allo)"), std::string("[]"),
             std::string("null"), std::string("{\"a\": \"\xff\"}"), huge}) {
        write(written);
        const Consent consent = desk(WhenUndecided::ask, Answer::allow);
        EXPECT_FALSE(consent.use(kMail).isAllowed);
        EXPECT_THAT(consent.use(kMail).why, HasSubstr(record.file().string()));
        EXPECT_FALSE(consent.settle(kMail).trouble.empty());
        EXPECT_THROW(record.decide(kMail, Decision::allowed), ConsentError);
        EXPECT_EQ(text(), written) << "what a person wrote is theirs to mend";
    }
    EXPECT_THAT(asked, IsEmpty());
}

/// What a use and a settling do: with what is recorded, in which mode, with which owner.
TEST_F(ConsentTest, decidesByRecordModeAndOwner)
{
    struct Case {
        const char* recorded; // the word; null: none
        WhenUndecided mode;
        Answer answer;
        bool use; // may the use go on
        const char* afterUse; // the word that stands then
        const char* afterSettling;
        int questions; // in each of the two
    };
    using enum WhenUndecided;
    const Case cases[] = {
        {nullptr, allow, Answer::nobody, true, nullptr, "allowed", 0},
        {nullptr, ask, Answer::allow, true, "allowed", "allowed", 1},
        {nullptr, ask, Answer::refuse, false, "refused", "refused", 1},
        {nullptr, ask, Answer::nobody, false, nullptr, nullptr, 1},
        {"perhaps", allow, Answer::nobody, true, "perhaps", "allowed", 0},
        {"perhaps", ask, Answer::refuse, false, "refused", "refused", 1},
        {"allowed", ask, Answer::refuse, true, "allowed", "allowed", 0},
        {"refused", allow, Answer::allow, false, "refused", "refused", 0},
        {"refused", ask, Answer::allow, false, "refused", "refused", 0},
        {"restricted", ask, Answer::allow, false, "restricted", "restricted", 0},
        {"write-only", allow, Answer::allow, false, "write-only", "write-only", 0},
    };
    const auto file = [](const char* word) {
        return word == nullptr ? std::string("{}") : fmt::format("{{\n  \"com.apple.mail\": \"{}\"\n}}", word);
    };
    const auto words = [&] { return text().substr(0, text().find_last_of('}') + 1); };
    for (const Case& each : cases) {
        const Consent consent = desk(each.mode, each.answer);
        const std::string name =
            fmt::format("{} {} {}", file(each.recorded), static_cast<int>(each.mode), static_cast<int>(each.answer));
        asked.clear();
        write(file(each.recorded));
        const Consent::Verdict verdict = consent.use(kMail);
        EXPECT_EQ(verdict.isAllowed, each.use) << name;
        EXPECT_EQ(verdict.why.find("mervo bootstrap-permissions") != std::string::npos,
            each.questions == 1 && each.answer == Answer::nobody)
            << name;
        EXPECT_EQ(words(), file(each.afterUse)) << name;
        EXPECT_EQ(asked.size(), each.questions) << name;

        write(file(each.recorded));
        EXPECT_TRUE(consent.settle(kMail).trouble.empty()) << name;
        EXPECT_EQ(words(), file(each.afterSettling)) << name;
        EXPECT_EQ(asked.size(), 2 * each.questions) << name;
    }
}

TEST_F(ConsentTest, keepsWhatElseStandsInTheRecordAndWhatWasDecidedMeanwhile)
{
    write(R"({"com.apple.Notes": "refused", "note": {"to": "self"}, "calendar": "perhaps"})");
    record.decide("calendar", Decision::allowed);
    EXPECT_EQ(text(),
        "{\n  \"com.apple.Notes\": \"refused\",\n  \"note\": {\n    \"to\": \"self\"\n  },\n  \"calendar\": "
        "\"allowed\"\n}\n");
    EXPECT_EQ(record.decide("com.apple.Notes", Decision::allowed), Decision::refused);
    EXPECT_EQ(record.all(),
        (std::vector<std::pair<std::string, Decision>>{
            {"com.apple.Notes", Decision::refused}, {"calendar", Decision::allowed}}));
}

TEST_F(ConsentTest, losesNoAnswerOfManyAtOnce)
{
    constexpr int kWriters = 8, kAnswers = 25;
    atOnce(kWriters, [&](int writer) {
        for (int i = 0; i < kAnswers; ++i)
            record.decide(fmt::format("scope.{}.{}", writer, i), Decision::refused);
    });
    EXPECT_EQ(record.all().size(), kWriters * kAnswers);
}

TEST_F(ConsentTest, letsAnAnswerHoldForTheUseWhenTheDiskIsFull)
{
    write(R"({"calendar": "refused"})");
    const test::SmallFiles full(8);
    EXPECT_THROW(record.decide(kMail, Decision::allowed), ConsentError);
    EXPECT_TRUE(desk(WhenUndecided::ask, Answer::allow).use(kMail).isAllowed);
    EXPECT_FALSE(desk(WhenUndecided::ask, Answer::refuse).use(kMail).isAllowed);
    EXPECT_EQ(desk(WhenUndecided::allow).settle(kMail).decision, Decision::undecided);
    EXPECT_EQ(text(), R"({"calendar": "refused"})");
}

TEST_F(ConsentTest, asksOneQuestionForUsesThatComeTogether)
{
    std::atomic<int> questions = 0;
    const Consent consent(
        record, [] { return WhenUndecided::ask; },
        [&](const std::string&) {
            ++questions;
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            return Answer::refuse;
        });
    atOnce(4, [&](int) { EXPECT_FALSE(consent.use(kMail).isAllowed); });
    EXPECT_EQ(questions, 1);
}

} // namespace
} // namespace mervo::desk
