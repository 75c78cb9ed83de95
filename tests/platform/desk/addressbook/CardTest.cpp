#include "platform/desk/addressbook/CardEdit.h"
#include "platform/desk/addressbook/Contact.h"

#include <gtest/gtest.h>

namespace mervo::desk {
namespace {

std::string card(const std::string& lines)
{
    return "BEGIN:VCARD\r\n" + lines + "END:VCARD\r\n";
}

/// "name|organization|label=value ...", the emails before the phones.
std::string shown(const std::string& lines)
{
    const ContentDocument document(card(lines));
    const Contact contact = readContact(document, document.components(document.root()).front());
    std::string text = contact.name + "|" + contact.field(ContactField::organization) + "|";
    for (const ContactValueKind kind : {ContactValueKind::email, ContactValueKind::phone}) {
        for (const ContactValue& value : contact.all(kind))
            text += value.label + "=" + value.value + " ";
    }
    return text;
}

TEST(Card, readsEveryVersion)
{
    const struct {
        std::string lines, shown;
    } cases[] = {
        {"VERSION:3.0\r\nN:Doe;Jane;;;\r\nFN:Jane Doe\r\n", "Jane Doe||"},
        {"VERSION:3.0\r\nN:Doe;Jane;;;\r\n", "Jane Doe||"},
        {"VERSION:3.0\r\nN:;;;;\r\nFN:\r\nORG:Acme\\, Inc.;Sales\r\n", "Acme, Inc.|Acme, Inc.|"},
        {"VERSION:3.0\r\nEMAIL:only@x.example\r\n", "only@x.example||=only@x.example "},
        {"VERSION:3.0\r\nFN:Two\\nLines\r\nORG: \\;a\\\\b\r\n", "Two Lines|;a\\b|"},
        {"VERSION:3.0\r\nFN:A\r\nEMAIL;TYPE=INTERNET;TYPE=WORK:a@x\r\nTEL;type=CELL,pref:+1 2\r\n",
            "A||work=a@x mobile=+1 2 "},
        {"VERSION:3.0\r\nFN:A\r\nitem1.EMAIL;type=INTERNET:a@x\r\nitem1.X-ABLabel:_$!<Other>!$_\r\n"
         "item2.TEL:5\r\nitem2.X-ABLabel:Ferien Haus\r\n",
            "A||other=a@x Ferien Haus=5 "},
        {"VERSION:4.0\r\nFN:A\r\nTEL;VALUE=uri;TYPE=\"voice,home\":tel:+1-555\r\nEMAIL:mailto:a@x\r\n",
            "A||=a@x home=+1-555 "},
        {"VERSION:2.1\r\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCl=\r\nler;J=C3=BCr=3Bgen\r\nTEL;HOME;VOICE:"
         "7\r\n",
            "Jür;gen Müller||home=7 "},
        {"VERSION:2.1\r\nFN;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:J=FCrgen =4\r\nTEL;CELL:=41\r\n",
            "Jürgen =4||mobile==41 "},
        {"VERSION:2.1\r\nFN;QUOTED-PRINTABLE:=41=0D=0A=42\r\n", "A  B||"},
        {"VERSION:2.1\r\nFN:J\xFCrgen\r\n", "Jürgen||"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(shown(each.lines), each.shown) << each.lines;
}

TEST(Card, knowsGroupsAndCompanies)
{
    const ContentDocument document(card("VERSION:4.0\r\nKIND:group\r\nFN:Friends\r\nMEMBER:urn:uuid:1\r\nMEMBER:2\r\n")
        + card("VERSION:3.0\r\nFN:Acme\r\nX-ABShowAs:COMPANY\r\nUID:urn:uuid:7\r\n"));
    const auto cards = document.components(document.root(), "VCARD");
    const Contact group = readContact(document, cards.at(0));
    EXPECT_TRUE(group.isGroup);
    EXPECT_EQ(group.members, (std::vector<std::string>{"1", "2"}));
    EXPECT_TRUE(readContact(document, cards.at(1)).isCompany);
    EXPECT_EQ(readContact(document, cards.at(1)).uid, "7");
}

/// The lines after a change, without BEGIN and END.
template <typename Change>
std::string changed(const std::string& lines, const Change& change)
{
    ContentDocument document(card(lines));
    change(document, document.components(document.root()).front());
    const std::string text = document.text();
    return text.substr(13, text.size() - 13 - 11);
}

TEST(Card, changesTheLinesThatItMust)
{
    using Document = ContentDocument;
    using Node = Document::Node;
    const std::string other = "X-ONE;a=\"b:c\":d\r\n e\r\nnote:\r\nADR:;;1 Way,2;T;;;\r\n";
    EXPECT_EQ(
        changed(other + "FN:Old\r\nN:Old;Jo;A,B;Dr.;\r\n",
            [](Document& document, Node node) { setContactField(document, node, ContactField::lastName, "New;er"); }),
        other + "FN:Jo New\\;er\r\nN:New\\;er;Jo;A,B;Dr.;\r\n");
    EXPECT_EQ(
        changed("VERSION:2.1\r\nN;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:M=FC;J=FC\r\nFN:x\r\n",
            [](Document& document, Node node) { setContactField(document, node, ContactField::firstName, "Jo"); }),
        "VERSION:2.1\r\nN;CHARSET=UTF-8:Mü;Jo\r\nFN;CHARSET=UTF-8:Jo Mü\r\n");
    EXPECT_EQ(changed("FN:A\r\nORG:Acme;Sales\r\n",
                  [](Document& document, Node node) {
                      setContactField(document, node, ContactField::organization, "");
                      setContactField(document, node, ContactField::department, "");
                  }),
        "FN:A\r\n");
    const std::string values = "item1.EMAIL;PREF=1:a@x\r\nitem1.X-ABLabel:School\r\nTEL;VALUE=uri;TYPE=home:tel:+1\r\n";
    EXPECT_EQ(changed(values,
                  [](Document& document, Node node) {
                      setContactValue(document, node, ContactValueKind::phone, 0, {"mobile", "+2"});
                      setContactValue(document, node, ContactValueKind::email, 0, {"work", "a@x"});
                  }),
        "item1.EMAIL;PREF=1;TYPE=work:a@x\r\nTEL;VALUE=uri;TYPE=cell:tel:+2\r\n");
    EXPECT_EQ(changed(values,
                  [](Document& document, Node node) {
                      EXPECT_TRUE(removeContactValue(document, node, ContactValueKind::email, 0));
                      EXPECT_FALSE(removeContactValue(document, node, ContactValueKind::email, 0));
                      addContactValue(document, node, ContactValueKind::email, {"club", "n@x"});
                  }),
        "TEL;VALUE=uri;TYPE=home:tel:+1\r\nitem1.X-ABLabel:club\r\nitem1.EMAIL:n@x\r\n");
    const std::string agent = "BEGIN:VCARD\r\nFN:B\r\nEND:VCARD\r\n";
    EXPECT_EQ(changed("FN:A\r\n" + agent + "EMAIL:a@x\r\n",
                  [](Document& document, Node node) {
                      addContactValue(document, node, ContactValueKind::email, {"", "last@x"});
                  }),
        "FN:A\r\n" + agent + "EMAIL:a@x\r\nEMAIL:last@x\r\n");
}

} // namespace
} // namespace mervo::desk
