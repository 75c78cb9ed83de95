#include "core/tools/mail/MailBody.h"
#include "tests/support/Growth.h"

#include <functional>
#include <gmock/gmock.h>

namespace mervo {
namespace {

using testing::EndsWith;

struct Case {
    std::string name;
    std::string text;
    std::string cleaned;
};

void check(std::initializer_list<Case> cases)
{
    for (const auto& [name, text, cleaned] : cases)
        EXPECT_EQ(MailBody::clean(text), cleaned) << name;
}

TEST(MailBody, keepsPlainText)
{
    check({
        {"nothing", "", ""},
        {"only blanks", " \r\n\t\r\n ", ""},
        {"line ends become one kind", "a\r\nb\rc\nd", "a\nb\nc\nd"},
        {"blanks are normalised", "  a  \t b \t\n\n\n\n\t c\n", "a b\n\nc"},
        {"a comparison is no markup", "1 < 2 and 3 > 2, <b>bold</b>", "1 < 2 and 3 > 2, <b>bold</b>"},
        {"entities stay in plain text", "a &amp; b", "a &amp; b"},
        {"other scripts", "日本語\u00A0の  本文", "日本語\u00A0の 本文"},
    });
}

TEST(MailBody, takesMarkupAway)
{
    check({
        {"blocks are lines of their own", "<div>one</div><p>two</p>three<BR>four<br/>five<Br />six",
            "one\ntwo\nthree\nfour\nfive\nsix"},
        {"headings and list items", "<html><H1>T</H1><ul><li>a</LI><li>b</li></ul>", "T\na\nb"},
        {"an unlisted break is only a tag", "<br >a<br  />b<hr>c", "abc"},
        {"scripts, styles, heads and comments go whole",
            "<head>\n<title>x</title></head><style type=a>p{}</style>a<SCRIPT src=\"x\">if (1 > 2) {}\n</script>b<!-- "
            "<p>\n c -->d<p>",
            "abd"},
        {"each ends at its first end", "<div>a<script>1</script>b<script>2</script>c", "abc"},
        {"an end that never comes removes only the tag", "<div>a<script>b", "ab"},
        {"a longer name is another tag", "<div><scripture>a</scripture>", "a"},
        {"tags over several lines", "<div\n class=\"x\"\n>a</div>", "a"},
        {"entities", "<p>a&nbsp;b &lt;c&gt; &quot;d&quot; &#39;e&apos; &eacute; &AMP;",
            "a b <c> \"d\" 'e' &eacute; &AMP;"},
        {"an ampersand is decoded first", "<p>&amp;lt;b&amp;gt;", "<b>"},
        {"invisible characters become blanks", "<p>a\u200Bb\u200C\u200Dc\u2060\uFEFFd\u00A0e", "a b c d e"},
        {"blank lines are kept to one", "<div>a</div><br><br><br><br><div>b</div>", "a\n\nb"},
    });
    EXPECT_EQ(MailBody::stripHTMLToText("<p>On x wrote:</p>> q"), "On x wrote:\n> q") << "no cutting here";
}

TEST(MailBody, cutsTheQuotedTail)
{
    check({
        {"quoted lines", "answer\n> question\nmore", "answer"},
        {"a quote in the first line", "> all", ""},
        {"a sign inside a line stays", "a > b\nc", "a > b\nc"},
        {"an English attribution", "yes\n\nOn Mon, 5 Jan 2026 at 10:00, Anna <a@b.example> wrote:\n\nold", "yes"},
        {"a French one", "oui\nLe lun. 5 janv. 2026 à 10:00, Anna <a@b.example> a écrit :\n\nvieux", "oui"},
        {"with the no-break space of typographers", "oui\nLe 5 janv., Anna a écrit\u00A0:\nvieux", "oui"},
        {"the short French form", "oui\nLe 5, Anna écrit:\nvieux", "oui"},
        {"an attribution must end its line", "On Monday she wrote: hello\nbye", "On Monday she wrote: hello\nbye"},
        {"and begin it", "so On Monday he wrote:\nbye", "so On Monday he wrote:\nbye"},
        {"its letter case counts", "on Monday he wrote:\nbye", "on Monday he wrote:\nbye"},
        {"it spans two hundred characters", "a\nOn " + std::string(200, 'x') + " wrote:\nb", "a"},
        {"and not more", "a\nOn " + std::string(201, 'x') + " wrote:\nb",
            "a\nOn " + std::string(201, 'x') + " wrote:\nb"},
        {"a mark in any letter case", "a\n-----ORIGINAL message-----\nb", "a"},
        {"the French mark", "a\n-----Message d'origine-----\nb", "a"},
        {"a long rule", "a\n" + std::string(32, '_') + "\nb", "a"},
        {"a shorter one stays", "a\n" + std::string(31, '_') + "\nb", "a\n" + std::string(31, '_') + "\nb"},
        {"the earliest counts", "a\n> q\n-----Original Message-----\nb\nOn x wrote:\n", "a"},
        {"in markup too", "<div>yes</div><div>On Monday, Anna wrote:</div><blockquote>old</blockquote>", "yes"},
    });
}

TEST(MailBody, keepsToItsCap)
{
    const std::string note = "\n\n[truncated: ";
    const std::string whole(8192, 'x');
    EXPECT_EQ(MailBody::clean(whole), whole);
    EXPECT_EQ(MailBody::clean(whole + "y"), whole + note + "1 more bytes]");
    EXPECT_EQ(MailBody::clean(std::string(8190, 'x') + "日" + "z"), std::string(8190, 'x') + note + "4 more bytes]")
        << "a character is cut whole";
    EXPECT_EQ(
        MailBody::clean(std::string(8190, 'x') + "e\u0301\u0301 z"), std::string(8190, 'x') + note + "7 more bytes]")
        << "a letter keeps its accents";
    const std::string cut = MailBody::clean("e" + test::repeated(20000, "\u0301"));
    EXPECT_GE(cut.size(), 8190U);
    EXPECT_THAT(cut, EndsWith(" more bytes]"));
}

// What each case tries is a pattern that could look for its end again from every place.
TEST(MailBody, takesLinearTimeOnHostileText)
{
    const std::string attribution = "On " + std::string(201, 'x') + "\n";
    for (const std::string_view part : {"<script>", "<script ", "<style><head>", "<!--", "<", "<a <", "<p>", " ", " \n",
             "\n", "x \t y", "On \n", "On wrote: x ", "Le a écrit \n", "Le écrit :  x", "&amp;",
             "_______________________________ ", "\u200B", "<br><script></script>", "\r", attribution.c_str()}) {
        const auto clean = [&](std::size_t bytes) {
            EXPECT_LE(MailBody::clean("<p>" + test::repeated(bytes / part.size(), part)).size(), 8192U + 100U);
        };
        EXPECT_LT(test::growth(200'000, clean), test::kLinear) << part;
    }
}

} // namespace
} // namespace mervo
