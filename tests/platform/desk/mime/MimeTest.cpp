#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/MessageHead.h"
#include "platform/desk/mime/MimeReader.h"
#include "platform/unicode.h"
#include "tests/support/Growth.h"

#include <gmock/gmock.h>
#include <random>

namespace mervo::desk {
namespace {

std::string part(const std::string& head, const std::string& body, const std::string& mark = "b")
{
    return "--" + mark + "\n" + head + "\n\n" + body + "\n";
}

std::string plain(const std::string& body, const std::string& mark = "b")
{
    return part("Content-Type: text/plain", body, mark);
}

std::string multipart(const std::string& kind, const std::string& parts, const std::string& mark = "b")
{
    return "Content-Type: multipart/" + kind + "; boundary=" + mark + "\n\n" + parts + "--" + mark + "--\n";
}

std::string attached(const MimeContent& content)
{
    std::string names;
    for (const MimeAttachment& one : content.attachments)
        names += one.name + ":" + one.type + ":" + std::to_string(one.size) + " ";
    return names;
}

TEST(MimeReader, choosesTheTextThatAPersonWouldRead)
{
    const std::string alternative =
        multipart("alternative", plain("plain") + part("Content-Type: text/html", "<p>html</p>"));
    const std::tuple<const char*, std::string, const char*, const char*> cases[] = {
        {"no MIME", "Subject: x\n\nhello\r\nworld\r\n", "hello\nworld\n", ""},
        {"latin-1",
            "Content-Type: text/plain; charset=iso-8859-1\nContent-Transfer-Encoding: quoted-printable\n\ncaf=E9",
            "café", ""},
        {"wrong charset", "Content-Type: text/plain; charset=utf-8\n\ncaf\xE9", "café", ""},
        {"unknown charset", "Content-Type: text/plain; charset=x-none\n\ncaf\xC3\xA9", "café", ""},
        {"base64", "Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: base64\n\nw6k=\n", "é", ""},
        {"utf-16", "Content-Type: text/plain; charset=utf-16be\nContent-Transfer-Encoding: base64\n\nAOk=\n", "é", ""},
        {"HTML only", "Content-Type: text/html\n\n<p>x</p>", "<p>x</p>", ""},
        {"alternative", alternative, "plain", ""},
        {"HTML first", multipart("alternative", part("Content-Type: text/html", "<p>h</p>") + plain("p")), "p", ""},
        {"text and file",
            multipart("mixed",
                plain("see file")
                    + part("Content-Type: application/pdf; name=a.pdf\nContent-Transfer-Encoding: base64", "JVBERg==")),
            "see file", "a.pdf:application/pdf:4 "},
        {"text around a picture",
            multipart("mixed",
                plain("one") + part("Content-Type: image/png\nContent-Disposition: inline; filename=\"p.png\"", "x")
                    + plain("two")),
            "one\ntwo", "p.png:image/png:1 "},
        {"an attached text",
            multipart("mixed",
                plain("body")
                    + part("Content-Type: text/plain\nContent-Disposition: attachment; "
                           "filename*=utf-8''r%C3%A9sum%C3%A9.txt",
                        "cv")),
            "body", "résumé.txt:text/plain:2 "},
        {"picture of a page",
            multipart("related",
                part("Content-Type: text/html", "<img src=cid:1>")
                    + part("Content-Type: image/png\nContent-ID: <1>", "x")),
            "<img src=cid:1>", ""},
        {"nested",
            multipart("mixed",
                part(alternative.substr(0, alternative.find("\n\n")).replace(alternative.find("=b") + 1, 1, "c"),
                    plain("inner", "c") + part("Content-Type: text/html", "<b>", "c") + "--c--")
                    + part("Content-Type: text/csv; name=t.csv", "1,2")),
            "inner", "t.csv:text/csv:3 "},
        {"forwarded message",
            multipart("mixed", plain("fyi") + part("Content-Type: message/rfc822", "Subject: inner\n\ninner body")),
            "fyi", "message.eml:message/rfc822:0 "},
        {"signed", multipart("signed", plain("hi") + part("Content-Type: application/pgp-signature", "sig")), "hi", ""},
        {"no end mark", "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: text/plain\n\ncut off",
            "cut off", ""},
        {"file alone", "Content-Type: application/pdf; name=a.pdf\n\n%PDF", "", "a.pdf:application/pdf:4 "},
        {"empty", "", "", ""},
    };
    for (const auto& [name, message, text, attachments] : cases) {
        const MimeContent content = readMime(message);
        EXPECT_EQ(content.text, text) << name;
        EXPECT_EQ(attached(content), attachments) << name;
    }
}

TEST(MimeReader, endsForHostileMessages)
{
    std::string deep = "Subject: deep\n";
    for (int i = 0; i < 20'000; ++i)
        deep += "Content-Type: multipart/mixed; boundary=b" + std::to_string(i) + "\n\n--b" + std::to_string(i) + "\n";
    EXPECT_TRUE(platform::isValidUtf8(readMime(deep).text));
}

TEST(Messages, giveWellFormedTextForAnyBytes)
{
    std::mt19937 random(11);
    const std::string_view pieces[] = {"Subject:", "From:", "To:", "Date:", "=?", "?=", "=?utf-8?Q?", "=0D=0A", "?Q?",
        "?B?", "utf-8", "\n", "\n", "\n\n", "\r\n", " ", "<", ">", "(", "\"", "\\", "\xFF", "\xC3", "=E9",
        std::string_view("\0", 1), ";", ":", ",", "@", "utf-7", "Content-Type: ", "multipart/mixed; boundary=b",
        "text/html; charset=utf-7", "--b\n", "--b--\n", "Content-Transfer-Encoding: base64", "filename*0*=x''%",
        "message/rfc822", "Content-Disposition: attachment", "charset=iso-2022-jp\n\n\x1B$B"};
    for (int round = 0; round < 30'000; ++round) {
        std::string message;
        for (int i = 0; i < 30; ++i)
            message += pieces[random() % std::size(pieces)];
        const MessageHead head = readMessageHead(message);
        ASSERT_TRUE(platform::isValidUtf8(head.subject) && platform::isValidUtf8(head.sender)) << message;
        ASSERT_EQ(head.subject.find_first_of("\r\n"), std::string::npos) << message;
        parseAddressList(head.to);
        ASSERT_TRUE(platform::isValidUtf8(readMime(message).text)) << message;
    }
}

TEST(MimeReader, takesLinearTimeOnHostileHeads)
{
    const std::string inner = "Content-Type: multipart/mixed; boundary=b\n\n--b\n";
    for (const auto& [start, part] : std::initializer_list<std::pair<std::string, const char*>>{{"To: ", "a: "},
             {"Date: ", "Mon, 1 "}, {"Content-Type: a/b; ", "a=(\"; "}, {inner + "Content-Type: a/b; ", "a=(\"; "},
             {inner + "Content-Type: message/rfc822\n\nTo: ", "a: "}, {inner, "--b\nTo: x\n"},
             {"Content-Type: multipart/mixed; boundary*0=b\n\n--b\nDate: ", "Mon, 1 "},
             {"Content-Type: multipart/mixed; boundary=\"=?utf-8?Q?b?=\"\n\n--b\nDate: ", "Mon, 1 "}}) {
        const auto work = [&head = start, more = part](
                              std::size_t times) { readMime(head + test::repeated(times, more) + "\n\ntext\n"); };
        EXPECT_LT(test::growth(3'000, work), test::kLinear) << start << part;
    }
    const MimeContent read = readMime("To: " + test::repeated(3'000, "a@b, ") + "\n\nhello\n");
    EXPECT_EQ(read.text, "hello\n") << "a long list of recipients is no attack";
}

TEST(MimeReader, keepsLinesOfTheTextThatLookLikeALongField)
{
    const std::string patch =
        "--- a/settings.yml\n+++ b/settings.yml\n-key: value\n" + test::repeated(300, " what stood there before\n");
    for (const std::string& text : {patch, "--bb\n" + patch})
        EXPECT_EQ(readMime(multipart("mixed", plain(text))).text, text);
}

} // namespace
} // namespace mervo::desk
