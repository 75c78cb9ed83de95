#include "core/policy/Remarks.h"
#include "core/catalogue/Catalogue.h"
#include "tests/support/Growth.h"

#include <gmock/gmock.h>
#include <iterator>

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> sentences(std::string_view id, const Args& args)
{
    std::vector<std::string> all;
    for (const Remark& remark : Remarks::of(*Tools::find(id), args))
        all.push_back((remark.noEffect ? "- " : "") + remark.sentence);
    return all;
}

// "- " stands before what has no effect.
TEST(Remarks, sayWhichArgumentsAToolDoesNotTakeAsTheyLook)
{
    const struct {
        const char* tool;
        Args args;
        std::vector<std::string> said;
    } cases[] = {
        {"mail.delete", {{"olderthan", "30"}}, {"- mail.delete ignores olderthan; did you mean olderThan?"}},
        {"mail.delete", {{"sender", "quentin"}}, {"- mail.delete ignores sender"}},
        {"mail.delete", {{"limit", "1"}}, {"- mail.delete ignores limit"}},
        {"mail.delete", {{"a\nb", "1"}, {"\u202e", "1"}},
            {"- mail.delete ignores a<U+000A>b", "- mail.delete ignores <U+202E>"}},
        {"mail.send", {{"cc", "ada@example.org"}}, {"- mail.send ignores cc"}},
        {"mail.notify", {{"to", "x@example.org"}},
            {"- mail.notify ignores to: it reaches only the owner's configured address"}},
        {"mail.delete", {{"status", "raed"}}, {"- status=\"raed\" is not unread or read, so it filters nothing"}},
        {"mail.delete", {{"status", "UNREAD"}}, {}},
        {"mail.delete", {{"olderThan", "-60"}},
            {"- olderThan=\"-60\" is not a whole number from 1, so it leaves no message out"}},
        {"mail.delete", {{"olderThan", "3 days"}},
            {"olderThan=\"3 days\" is not a whole number from 1, so the tool rounds it or fails"}},
        {"mail.delete", {{"minSize", "0"}}, {"- minSize=\"0\" is not a number above 0, so it sets no bound"}},
        {"mail.delete", {{"maxSize", " 5"}},
            {"maxSize=\" 5\" is not a number above 0, so the tool reads it as bytes or fails"}},
        {"mail.delete", {{"minSize", "1.5"}, {"maxSize", "1e2"}}, {}},
        {"mail.delete", {{"from", " "}}, {"from is blank, and most texts contain a blank"}},
        {"mail.delete", {{"from", ""}}, {"- from is empty, which counts as not given"}},
        {"mail.delete", {{"before", "2026-13-45"}},
            {"before=\"2026-13-45\" is no day in the form YYYY-MM-DD; it is read as 2027-02-14"}},
        {"mail.delete", {{"before", "2026-02-30"}},
            {"before=\"2026-02-30\" is no day in the form YYYY-MM-DD; it is read as 2026-03-02"}},
        {"mail.delete", {{"after", "2026-00-00"}},
            {"after=\"2026-00-00\" is no day in the form YYYY-MM-DD; it is read as 2025-11-30"}},
        {"mail.delete", {{"before", "yesterday"}},
            {"before=\"yesterday\" is no day in the form YYYY-MM-DD; the tool fails or reads another day"}},
        {"mail.delete", {{"before", "2026-02-28"}, {"olderThan", "5"}}, {"- before has no effect beside olderThan"}},
        {"mail.delete", {{"before", "9000-01-01"}}, {"- before lies ahead, so it leaves no message out"}},
        {"mail.delete", {{"after", "9000-01-01"}}, {"after lies ahead, so no message matches"}},
        {"mail.search", {{"hasAttachment", "false"}},
            {"hasAttachment=\"false\" is not true, so it counts as true: only messages with an attachment match"}},
        {"mail.search", {{"limit", "-5"}}, {"limit=\"-5\" is not a whole number from 0, so there is no limit"}},
        {"mail.flag", {{"flag", "no"}},
            {"flag=\"no\" is not true or false, so it counts as true: only \"false\" is off"}},
        {"mail.flag", {{"color", "teal"}},
            {"- color=\"teal\" is not red, orange, yellow, green, blue, purple, gray or grey, so the flag's colour "
             "stays "
             "as it is"}},
        {"mail.flag", {{"color", "Red"}, {"flag", "FALSE"}}, {"- color has no effect where flag is false"}},
        {"mail.archive", {{"mailbox", ""}}, {"mailbox is empty"}},
        {"mail.send", {{"attachments", "/a, b/c"}}, {"attachments=\"/a, b/c\" is no absolute path"}},
        {"imessage.read", {{"since", "an hour"}},
            {"- since=\"an hour\" is not a whole number from 1, so it counts as not given"}},
        {"cal.find", {{"days", "+3"}}, {}},
        {"cal.find", {{"days", "99999999999999999999"}},
            {"- days=\"99999999999999999999\" is not a whole number, so it counts as not given"}},
        {"contact.add", {{"first", "Ada"}, {"name", "Ada King"}}, {"- name has no effect beside first or last"}},
        {"cal.update", {{"url", "a b"}}, {"- url is no URL (RFC 3986), so it is left out"}},
        {"cal.add", {{"hour", "24"}},
            {"hour=\"24\" is not a whole number from 0 to 23, so the event lies on another day"}},
        {"auto.add", {{"every", "5"}, {"at", "8:30"}, {"command", "ls"}, {"prompt", "x"}, {"model", "opus"}},
            {"- at has no effect beside every", "- prompt has no effect beside command",
                "- model has no effect beside command: it is an agent's"}},
        {"auto.add", {{"everyMinutes", "5"}, {"prompt", "x"}}, {}},
        {"ask", {{"channel", "pigeon"}}, {"channel=\"pigeon\" is not mail or cockpit, so it goes by mail"}},
        {"how_it_works", {{std::string(1000, 'x'), ""}}, {"- how_it_works ignores " + std::string(60, 'x') + "..."}},
    };
    for (const auto& [tool, args, said] : cases)
        EXPECT_EQ(sentences(tool, args), said) << tool;
}

std::string wellFormed(const Format& format)
{
    using enum Format::Kind;
    switch (format.kind) {
    case text:
    case needle:
        return "text";
    case words:
        return std::string(format.words.substr(0, format.words.find('|')));
    case day:
    case moment:
        return "2020-02-29";
    case time:
        return "08:30";
    case whole:
    case number:
        return "7";
    case hours:
        return "8,12,16";
    case paths:
        return "/a/b, /c";
    }
    return {};
}

TEST(Remarks, areNoneForAnyToolWhoseArgumentsHaveTheirForm)
{
    for (const Tool* tool : Tools::all()) {
        EXPECT_THAT(sentences(tool->id, {}), IsEmpty()) << tool->id;
        for (const Argument& argument : tool->arguments) {
            EXPECT_THAT(sentences(tool->id, {{std::string(argument.name), wellFormed(argument.format)}}), IsEmpty())
                << tool->id << " " << argument.name;
        }
    }
}

TEST(Remarks, sayWhatAnAnswerLeftOut)
{
    const auto after = [](const char* id, const Args& args, const std::string& output) {
        return Remarks::after(*Tools::find(id), args, output);
    };
    const auto reached = [](const char* limit) {
        return ElementsAre(std::string("the limit of ") + limit + " was reached; there may be more");
    };
    const std::string fifty = "first" + test::repeated(49, "\nhit");
    EXPECT_THAT(after("mail.search", {}, fifty), reached("50"));
    EXPECT_THAT(after("imessage.read", {{"limit", " 5"}}, fifty), reached("50"));
    EXPECT_THAT(after("mail.search", {{"limit", " 5"}}, fifty), IsEmpty()) << "who knows";
    EXPECT_THAT(after("mail.search", {{"limit", "+2"}}, "a\nb"), reached("2"));
    for (const auto* limit : {"0", "-2", "51"})
        EXPECT_THAT(after("mail.search", {{"limit", limit}}, fifty), IsEmpty()) << limit;
    EXPECT_THAT(after("mail.headers", {}, fifty), IsEmpty());
    EXPECT_THAT(after("imessage.read", {{"limit", "1"}}, "(no matching inbound messages)"), IsEmpty());
    EXPECT_THAT(after("mail.search", {{"limit", "1"}}, ""), IsEmpty());
    EXPECT_THAT(after("mail.body", {}, "Yes.\n\nOn Monday, Bob wrote:\n> Well?\n"),
        ElementsAre("the quoted text at the end was cut: 30 of 36 bytes"));
    EXPECT_THAT(after("mail.body", {}, "Yes.\n"), IsEmpty());
}

TEST(Remarks, sayWhatAFailedScriptWanted)
{
    const std::string made = "execution error: Can't make \"yest\" into type integer. (-1700)";
    const struct {
        const char* tool;
        std::string error;
        Args args;
        const char* added;
    } cases[] = {
        {"mail.search", made, {{"before", "yesterday"}}, " - before wants a date as YYYY-MM-DD, not \"yesterday\""},
        {"mail.search", "execution error: Can't get text 6 thru 7 of \"5\". (-1728)", {{"after", "5"}},
            " - after wants a date as YYYY-MM-DD, not \"5\""},
        {"mail.headers", made, {{"limit", "ten"}}, " - limit wants a whole number from 0, not \"ten\""},
        {"mail.delete", made, {{"olderThan", "a\nweek"}, {"minSize", "2"}},
            " - olderThan wants a whole number from 1, not \"a<U+000A>week\""},
        {"mail.delete", made, {{"maxSize", "big"}}, " - maxSize wants a number above 0, not \"big\""},
        {"reminder.add", made, {{"due", "soon"}}, " - due wants a date as YYYY-MM-DD, not \"soon\""},
        {"mail.search", made, {{"before", "2026-01-01"}, {"status", "any"}, {"limit", "-1"}}, ""},
        {"mail.search", "execution error: mailbox not found: X (-2700)", {{"before", "yesterday"}}, ""},
    };
    for (const auto& [tool, error, args, added] : cases)
        EXPECT_EQ(Remarks::explained(error, *Tools::find(tool), args), error + added);
}

} // namespace
} // namespace mervo
