#include "platform/desk/addressbook/CardEdit.h"
#include "platform/desk/addressbook/Contact.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace mervo::desk;

namespace {

void check(bool isTrue)
{
    if (!isTrue)
        std::abort();
}

/// What is set is what is read, and reading a card a second time changes nothing.
void change(ContentDocument& document, ContentDocument::Node card)
{
    const Contact before = readContact(document, card);
    setContactField(document, card, ContactField::lastName, "Doe; x, \xC3\xA9");
    check(readContact(document, card).field(ContactField::lastName) == "Doe; x, \xC3\xA9");
    setContactField(document, card, ContactField::organization, "");
    check(readContact(document, card).field(ContactField::organization).empty());
    addContactValue(document, card, ContactValueKind::email, {"school", "a@b.example"});
    const Contact after = readContact(document, card);
    check(after.all(ContactValueKind::email).size() == before.all(ContactValueKind::email).size() + 1);
    check(after.all(ContactValueKind::email).back().label == "school");
    removeContactValue(document, card, ContactValueKind::email, 0);
    finishCard(document, card, "20260301T081500Z");
    check(readableLine(document, card, "REV").has_value());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ContentDocument document(std::string(reinterpret_cast<const char*>(data), size));
    for (const auto card : document.components(document.root(), "VCARD")) {
        readContact(document, card);
        change(document, card);
    }
    const ContentDocument again(document.text());
    for (const auto card : again.components(again.root(), "VCARD"))
        check(readContact(again, card).name.find('\n') == std::string::npos);
    return 0;
}
