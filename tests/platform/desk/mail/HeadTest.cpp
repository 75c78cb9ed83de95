#include "platform/desk/mail/EncodedWord.h"
#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/MailDate.h"
#include "platform/desk/mail/MessageHead.h"
#include "tests/support/Growth.h"

#include <gtest/gtest.h>

namespace mervo::desk {
namespace {

TEST(HeaderText, decodesWhatMailInTheWildWrites)
{
    constexpr std::pair<const char*, const char*> cases[] = {
        {"plain", "plain"},
        {"=?UTF-8?Q?R=C3=A9union_=3A?= demain", "Réunion : demain"},
        {"=?utf-8?B?w4k=?=", "É"},
        {"=?UTF-8?B?w4k=?= =?UTF-8?Q?t=C3=A9?=", "Été"}, // blanks between words are nothing
        {"=?UTF-8?B?w4k=?=\r\n =?UTF-8?B?dMOp?= fin", "Été fin"},
        {"=?UTF-8?B?w?= =?UTF-8?B?w4k=?=", "É"}, // a word too short for a byte
        {"=?UTF-8?Q?=C3?= =?UTF-8?Q?=A9?=", "é"}, // a character cut in two
        {"=?iso-8859-1?Q?caf=E9?=", "café"},
        {"=?ISO-8859-15?Q?=A4?=", "€"},
        {"=?windows-1252?Q?=93quoted=94?=", "“quoted”"},
        {"=?iso-2022-jp?B?GyRCRnxLXBsoQg==?=", "日本"},
        {"=?gb2312?B?xOO6ww==?=", "你好"},
        {"=?koi8-r?Q?=F0=D2=C9=D7=C5=D4?=", "Привет"},
        {"=?us-ascii*en?Q?hello?=", "hello"},
        {"a=?utf-8?q?b?=c", "abc"},
        {"=?utf-8?q?a=0D=0Ab=E2=80=A8c=C2=85?= d\u2029e", "a  b   c   d   e"}, // no line end is left
        {"=?utf-8?q?with spaces inside?=", "with spaces inside"},
        {"=?nonesuch?Q?=C3=A9?=", "é"}, // an unknown charset
        {"=?utf-8?X?abc?=", "=?utf-8?X?abc?="},
        {"=?utf-8?Q?never ends", "=?utf-8?Q?never ends"},
        {"=?=?=?", "=?=?=?"},
        {"raw \xC3\xA9", "raw é"},
        {"raw \xE9", "raw é"},
        {"folded\r\n line", "folded line"},
        {"tab\tand \x01 control", "tab and   control"},
        {"=?utf-8?Q?a=0D=0ABcc:_x?=", "a  Bcc: x"}, // no line end gets out of a word
        {"=?utf-16//TRANSLIT?Q?a?=", "a"},
    };
    for (const auto& [raw, text] : cases)
        EXPECT_EQ(decodeHeaderText(raw), text) << raw;
    std::string endless;
    while (endless.size() < 2'000'000)
        endless += "=?a?q?x";
    EXPECT_EQ(decodeHeaderText(endless), endless) << "in linear time: a quadratic one takes minutes";
}

TEST(Addresses, areFoundInEveryFormThatTheStandardAllows)
{
    constexpr std::pair<const char*, const char*> cases[] = {
        {"a@x.example", "a@x.example"},
        {"<a@x.example>", "a@x.example"},
        {"Ann Bee <a@x.example>", "Ann Bee <a@x.example>"},
        {"\"Bee, Ann\" <a@x.example>", "Bee, Ann <a@x.example>"},
        {"\"A \\\"B\\\" C\" <a@x.example>", "A \"B\" C <a@x.example>"},
        {"a@x.example (Ann (the) Bee)", "Ann (the) Bee <a@x.example>"},
        {"=?UTF-8?Q?Andr=C3=A9?= <a@x.example>", "André <a@x.example>"},
        {"\"=?UTF-8?Q?Andr=C3=A9?=\" <a@x.example>", "André <a@x.example>"},
        {"a@x.example,\r\n b@y.example", "a@x.example|b@y.example"},
        {"Team: Ann <a@x.example>, b@y.example;, c@z.example", "Ann <a@x.example>|b@y.example|c@z.example"},
        {"undisclosed-recipients:;", ""},
        {"<@relay.example:a@x.example>", "a@x.example"},
        {"Nobody", "Nobody"},
        {"\"a b\"@x.example", "a b@x.example"},
        {",,;", ""},
        {"Broken <a@x.example", "Broken <a@x.example>"},
        {"\"never closed <a@x.example>", "never closed <a@x.example>"},
    };
    for (const auto& [raw, expected] : cases) {
        std::string shown;
        for (const MailAddress& address : parseAddressList(raw))
            shown += (shown.empty() ? "" : "|") + displayAddress(address);
        EXPECT_EQ(shown, expected) << raw;
    }
}

TEST(Addresses, thatCannotStandInAFieldAreRefused)
{
    for (const char* good : {"a@x", "a.b+c@x.example", "ä@ö.example"})
        EXPECT_TRUE(isPlainAddress(good)) << good;
    for (const char* bad : {"", "a", "@x", "a@", "a@b@c", "a b@x", "a@x\nBcc: b@y", "a@x\r", "<a@x>", "a@x,b@y",
             "a@x;b", "\"a\"@x", "a@x\x7F", "a:b@x"})
        EXPECT_FALSE(isPlainAddress(bad)) << bad;
}

TEST(MailDate, readsOldAndNewForms)
{
    constexpr std::pair<const char*, std::int64_t> cases[] = {
        // -1: no date
        {"Thu, 15 Jan 2026 10:00:00 +0100", 1768467600},
        {"15 Jan 2026 09:00:00 GMT", 1768467600},
        {"Thu, 15 Jan 2026 09:00 +0000", 1768467600},
        {"Thu,15 Jan 26 04:00:00 EST", 1768467600},
        {"Thu, 15 Jan 2026 10:00:00 +0100 (CET)", 1768467600},
        {"Thu (a comment), 15 Jan 2026 10:00:00 +0100", 1768467600},
        {"Thu, 15-Jan-2026 09:00:00 -0000", 1768467600},
        {"Sun, 29 Feb 2004 00:00:00 +0000", 1078012800},
        {"1 Jan 70 00:00:00 Z", 0},
        {"Sat, 1 Jan 2000 00:00:60 -0530", 946704660},
        {"yesterday", -1},
        {"Thu, 32 Jan 2026 10:00:00 +0100", -1},
        {"15 Foo 2026 10:00:00", -1},
        {"15 Jan 2026 25:00:00", -1},
        {"", -1},
        {"((((((", -1},
        {"99999999999999999999", -1},
    };
    for (const auto& [raw, seconds] : cases)
        EXPECT_EQ(parseMailDate(raw).value_or(-1), seconds) << raw;
    EXPECT_EQ(parseMailDate(formatMailDate(1768467600)), 1768467600);
}

TEST(MessageHead, takesTheFirstOfEachFieldAndStopsAtTheEmptyLine)
{
    const MessageHead head =
        readMessageHead("From x@y Thu Jan 15\nno field here\nSUBJECT :\n one\n\ttwo\nFrom: A <a@x>\n"
                        "Subject: later\nMessage-Id:\r\n <1@x>\nTo: b@x,\n c@x\n\nDate: Thu, 15 Jan "
                        "2026 10:00:00 +0100\n");
    EXPECT_EQ(head.subject, "one two");
    EXPECT_EQ(head.sender, "A <a@x>");
    EXPECT_EQ(head.messageId, "1@x");
    EXPECT_EQ(head.to, "b@x, c@x");
    EXPECT_FALSE(head.sent) << "the date stands in the body";
    EXPECT_EQ(readMessageHead("Sender: s@x\n\n").sender, "s@x");
}

TEST(MessageHead, knowsWhereNothingCanBeAttached)
{
    const auto plain = [](const char* head) { return readMessageHead(head).isSinglePartText; };
    EXPECT_TRUE(plain("Subject: x\n\n"));
    EXPECT_TRUE(plain("Content-Type: TEXT/Plain; charset=utf-8\n\n"));
    EXPECT_FALSE(plain("Content-Type: multipart/mixed; boundary=x\n\n"));
    EXPECT_FALSE(plain("Content-Type: application/pdf\n\n"));
    EXPECT_FALSE(plain("Content-Type: text/plain; name=a.txt\n\n"));
    EXPECT_FALSE(plain("Content-Type: text/plain\nContent-Disposition: attachment\n\n"));
}

TEST(MessageHead, takesLinearTimeOnHostileFields)
{
    for (const auto& [start, part] : std::initializer_list<std::pair<const char*, const char*>>{{"Subject: x", "\n y"},
             {"From: ", "a b <a@b>, "}, {"From: =?", ":"}, {"From: ", "=?u?q?"}, {"Subject: ", "=?=?"}, {"From: ", "("},
             {"Subject: ", "=?koi8-r?q?=E9?= =?xyz?q?=E9?= "}, {"Subject: ", "\u0300\u0323"}, {"Date: ", " Mon ("}}) {
        const auto work = [&head = start, more = part](
                              std::size_t times) { readMessageHead(head + test::repeated(times, more) + "\n\n"); };
        EXPECT_LT(test::growth(3'000, work), test::kLinear) << start << part;
    }
}

} // namespace
} // namespace mervo::desk
