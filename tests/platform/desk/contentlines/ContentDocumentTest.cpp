#include "platform/desk/contentlines/ContentDocument.h"

#include "platform/desk/contentlines/TextValue.h"
#include "tests/support/Growth.h"

#include <gmock/gmock.h>

namespace mervo::desk {
namespace {

using Node = ContentDocument::Node;
using testing::ElementsAre;

/// An item with everything that a rewrite could hurt: folds in a name, a value and a character, a parameter in quotes,
/// a line that is none, an empty line, an alarm between properties, line ends of both kinds, no end of the last one.
const std::string kAwkward = "BEGIN:VCALENDAR\r\n"
                             "PROD\r\n ID:-//x\r\n"
                             "BEGIN:VEVENT\r\n"
                             "summary;LANGUAGE=de:Caf\xC3\r\n \xA9 mit\r\n\t Fold\r\n"
                             "ATTENDEE;CN=\"Doe; Jane:x\";X-A=1,\"2,3\":mailto:j@x.example\r\n"
                             "this is no line\r\n"
                             "\r\n"
                             "BEGIN:VALARM\nTRIGGER:-PT5M\nEND:VALARM\n"
                             "DESCRIPTION:a\\, b\\nc\\;d\\\\e\r\n"
                             "END:VEVENT\r\n"
                             "END:VCALENDAR";

Node onlyEvent(const ContentDocument& document)
{
    return document.components(document.components(document.root()).at(0), "vevent").at(0);
}

TEST(ContentDocument, readsWhatAFileHolds)
{
    const ContentDocument document(kAwkward);
    const Node event = onlyEvent(document);
    EXPECT_TRUE(document.isBalanced());
    EXPECT_EQ(document.textOf(event, "SUMMARY"), "Caf\xC3\xA9 mit Fold");
    EXPECT_EQ(document.textOf(event, "DESCRIPTION"), "a, b\nc;d\\e");
    EXPECT_EQ(document.valueOf(event, "TRIGGER"), std::nullopt) << "that is the alarm's";
    EXPECT_EQ(document.textOf(document.components(document.root())[0], "prodid"), "-//x");
    const auto attendee = document.read(document.line(event, "ATTENDEE").value());
    ASSERT_TRUE(attendee);
    EXPECT_EQ(attendee->parameter("cn"), "Doe; Jane:x");
    EXPECT_THAT(attendee->parameters.at(1).values, ElementsAre("1", "2,3"));
    EXPECT_EQ(attendee->value, "mailto:j@x.example");
}

TEST(ContentDocument, changesNothingButWhatItIsTold)
{
    ContentDocument document(kAwkward);
    EXPECT_EQ(document.text(), kAwkward);
    const Node event = onlyEvent(document);
    document.setValue(event, "SUMMARY", escapedText("Tea, 5"));
    document.setValue(event, "SEQUENCE", "1");
    std::string expected = kAwkward;
    const auto replace = [&](const std::string& old, const std::string& by) {
        expected.replace(expected.find(old), old.size(), by);
    };
    replace("summary;LANGUAGE=de:Caf\xC3\r\n \xA9 mit\r\n\t Fold\r\n", "summary;LANGUAGE=de:Tea\\, 5\r\n");
    replace("j@x.example\r\n", "j@x.example\r\nSEQUENCE:1\r\n");
    EXPECT_EQ(document.text(), expected);

    document.removeLines(event, "sequence");
    document.remove(document.components(event).at(0));
    document.addText(document.components(document.root())[0], "BEGIN:VTODO\nUID:1\nEND:VTODO\n");
    document.addText(document.root(), "X:1\n");
    replace("SEQUENCE:1\r\n", "");
    replace("BEGIN:VALARM\nTRIGGER:-PT5M\nEND:VALARM\n", "");
    replace("END:VCALENDAR", "BEGIN:VTODO\r\nUID:1\r\nEND:VTODO\r\nEND:VCALENDAR\r\nX:1\r\n");
    EXPECT_EQ(document.text(), expected);
}

TEST(ContentDocument, foldsWhatItWritesBetweenCharacters)
{
    ContentDocument document("BEGIN:VCARD\nEND:VCARD\n");
    const Node card = document.components(document.root()).at(0);
    const std::string text = test::repeated(100, "\xF0\x9F\x8D\xB5") + std::string("\x80\x80\x80\x80\0", 5)
        + test::repeated(200, "\x80") + "x";
    document.add(
        card, {.group = "item1", .name = "NOTE", .parameters = {{"X-Q", {"a;b", "c\"d\ne^f"}}}, .value = text});
    std::size_t longest = 0, start = 0;
    const std::string written = document.text();
    for (std::size_t end = written.find('\n'); end != std::string::npos; end = written.find('\n', start)) {
        longest = std::max(longest, end - start);
        start = end + 1;
    }
    EXPECT_LE(longest, 75U);
    EXPECT_EQ(written.find('\r'), std::string::npos) << "the file has bare line feeds";
    EXPECT_EQ(written.find("\x9F\n"), std::string::npos);
    const ContentDocument again(written);
    const auto note = again.read(again.line(again.components(again.root()).at(0), "note").value());
    ASSERT_TRUE(note);
    EXPECT_EQ(note->group, "item1");
    EXPECT_THAT(note->parameters.at(0).values, ElementsAre("a;b", "c\"d\ne^f"));
    EXPECT_EQ(note->value, withoutControls(text));
}

TEST(ContentDocument, readsCardsOfOldVersions)
{
    const ContentDocument document("\xEF\xBB\xBF"
                                   "BEGIN:VCARD\r\nVERSION:2.1\r\n"
                                   "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:Gr=C3=BC=\r\n=C3=9Fe=\r\n!\r\n"
                                   "TEL;HOME;VOICE:1=\r\nEND:VCARD\r\n");
    const Node card = document.components(document.root()).at(0);
    EXPECT_EQ(document.valueOf(card, "NOTE"), "Gr=C3=BC=C3=9Fe!");
    const auto phone = document.read(document.line(card, "TEL").value());
    ASSERT_TRUE(phone);
    EXPECT_EQ(phone->value, "1=");
    EXPECT_EQ(phone->parameters.at(1).name + phone->parameters.at(1).values.at(0), "VOICE");
}

TEST(ContentDocument, addsNothingBeforeTheFrontOfAFile)
{
    for (const std::string front : {"  ", "\xEF\xBB\xBF", "\xEF\xBB\xBF \n",
             "N;QUOTED-PRINTABLE:a=", "quoted-printable=", "N;QUOTED-PRINTABLE:=\n",
             "\rA\n\rQUOTED-PRINTABLE:a=", "B\nN;QUOTED-PRINTABLE:a=\r"}) {
        ContentDocument document(front);
        document.setValue(document.root(), "X", "1");
        EXPECT_EQ(document.text().substr(0, front.size()), front);
        EXPECT_EQ(ContentDocument(document.text()).valueOf(document.root(), "X"), "1");
    }
}

TEST(ContentDocument, keepsWhatIsNotBalanced)
{
    const std::pair<std::string, std::size_t> cases[] = {
        {"BEGIN:A\nBEGIN:B\nX:1\nEND:A\nBEGIN:A\nEND:A\n", 2}, // B ends with what it lies in
        {"END:A\nBEGIN:A\nEND:B\nX:1\n", 1},
        {"BEGIN:A", 1},
        {"X:1\n \n\n ;;\nX;A=\"b:1\n:\n.X:1\na.b.c:1\n\0\0", 0},
        {"\rQUOTED-PRINTABLE:a\nb=\nX:1\n", 0},
        {"", 0},
    };
    for (const auto& [text, count] : cases) {
        const ContentDocument document(text);
        EXPECT_EQ(document.text(), text);
        EXPECT_EQ(document.components(document.root()).size(), count) << text;
        EXPECT_EQ(document.isBalanced(), count == 0) << text;
    }
}

/// Components that are nested thousands of times, lines without content, and folds of one line: linear, and unharmed.
TEST(ContentDocument, readsHostileFilesInLinearTime)
{
    const std::vector<std::string> pieces[] = {{"", "BEGIN:A\n", ""}, {"", "END:A\n", ""}, {"", "BEGIN:A\nEND:B\n", ""},
        {"", "\n", ""}, {"", "A:\n", ""}, {"A:", "\n x", ""}, {"A", "\n ", "B:1"}, {"A;", "B=\",\";", "C=1:2"},
        {"A;X=quoted-printable:", "=\n", ""}, {"", std::string("\0\xFF", 2), ""}, {"BEGIN:", "\n A", "\nEND:A"},
        {"A:", "=\n", ""}};
    for (const auto& piece : pieces) {
        const auto work = [&](std::size_t times) {
            const std::string text = piece[0] + test::repeated(times, piece[1]) + piece[2];
            ContentDocument document(text);
            EXPECT_EQ(document.text() == text, true) << piece[1];
            document.setValue(document.root(), "SUMMARY", "x");
        };
        EXPECT_LT(test::growth(50'000, work), test::kLinear) << piece[1];
    }
}

} // namespace
} // namespace mervo::desk
