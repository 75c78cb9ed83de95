#include "platform/desk/addressbook/Contact.h"

#include "platform/ascii.h"
#include "platform/desk/addressbook/CardText.h"

#include <algorithm>
#include <array>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;
using Node = ContentDocument::Node;

/// Line ends and other control characters would break a line of output.
std::string onOneLine(std::string text)
{
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    const auto begin = text.find_first_not_of(' ');
    const auto end = text.find_last_not_of(' ');
    return begin == std::string::npos ? std::string() : text.substr(begin, end - begin + 1);
}

std::string withoutScheme(std::string value)
{
    for (const std::string_view scheme : {"mailto:", "tel:"}) {
        if (value.size() > scheme.size() && ascii::equalsIgnoringCase({value.data(), scheme.size()}, scheme))
            return value.substr(scheme.size());
    }
    return value;
}

/// "_$!<Mobile>!$_" is the Mac's way of writing a label of its own.
std::string plainLabel(const std::string& written)
{
    constexpr std::string_view kStart = "_$!<", kEnd = ">!$_";
    if (!written.starts_with(kStart) || !written.ends_with(kEnd) || written.size() < kStart.size() + kEnd.size())
        return onOneLine(written);
    return ascii::lowered(written.substr(kStart.size(), written.size() - kStart.size() - kEnd.size()));
}

std::string labelOf(const ContentDocument& document, Node card, const ContentLine& line)
{
    if (const auto written = labelLine(document, card, line.group)) {
        if (const auto label = document.read(*written))
            return plainLabel(cardText(*label));
    }
    constexpr std::array kNoLabels{"internet", "pref", "voice", "x400", "quoted-printable", "text"};
    for (const std::string& type : cardTypes(line)) {
        if (std::ranges::find(kNoLabels, type) == kNoLabels.end())
            return type == "cell" ? "mobile" : onOneLine(type);
    }
    return {};
}

std::string textOf(const ContentDocument& document, Node card, std::string_view name)
{
    const auto line = readableLine(document, card, name);
    const auto read = line ? document.read(*line) : std::nullopt;
    return read ? cardText(*read) : std::string();
}

std::vector<std::string> partsOf(const ContentDocument& document, Node card, std::string_view name, std::size_t count)
{
    const auto line = readableLine(document, card, name);
    const auto read = line ? document.read(*line) : std::nullopt;
    std::vector<std::string> parts = read ? cardParts(*read) : std::vector<std::string>();
    parts.resize(std::max(parts.size(), count));
    for (std::string& part : parts)
        part = onOneLine(std::move(part));
    return parts;
}

void readTexts(const ContentDocument& document, Node card, Contact& contact)
{
    const auto set = [&](ContactField field, std::string text) {
        contact.fields[static_cast<int>(field)] = std::move(text);
    };
    auto names = partsOf(document, card, "N", 3); // family; given; additional; prefixes; suffixes
    set(ContactField::lastName, std::move(names[0]));
    set(ContactField::firstName, std::move(names[1]));
    set(ContactField::middleName, std::move(names[2]));
    auto organization = partsOf(document, card, "ORG", 2);
    set(ContactField::organization, std::move(organization[0]));
    set(ContactField::department, std::move(organization[1]));
    set(ContactField::nickname, onOneLine(textOf(document, card, "NICKNAME")));
    set(ContactField::jobTitle, onOneLine(textOf(document, card, "TITLE")));
    set(ContactField::note, textOf(document, card, "NOTE"));
}

void readValues(const ContentDocument& document, Node card, Contact& contact)
{
    for (const ContactValueKind kind : {ContactValueKind::email, ContactValueKind::phone, ContactValueKind::url}) {
        for (const Node node : valueLines(document, card, kind)) {
            const auto line = document.read(node);
            contact.values[static_cast<int>(kind)].push_back(
                {labelOf(document, card, *line), onOneLine(withoutScheme(cardText(*line)))});
        }
    }
}

void readKind(const ContentDocument& document, Node card, Contact& contact)
{
    contact.isCompany = ascii::equalsIgnoringCase(textOf(document, card, "X-ABSHOWAS"), "COMPANY");
    for (const char* name : {"KIND", "X-ADDRESSBOOKSERVER-KIND"}) {
        const std::string kind = textOf(document, card, name);
        contact.isGroup = contact.isGroup || ascii::equalsIgnoringCase(kind, "group");
        contact.isCompany = contact.isCompany || ascii::equalsIgnoringCase(kind, "org");
    }
    if (!contact.isGroup)
        return;
    constexpr std::string_view kUuid = "urn:uuid:";
    for (const char* name : {"MEMBER", "X-ADDRESSBOOKSERVER-MEMBER"}) {
        for (const Node node : document.lines(card, name)) {
            const auto line = document.read(node);
            std::string member = line ? line->value : std::string();
            contact.members.push_back(member.starts_with(kUuid) ? member.substr(kUuid.size()) : member);
        }
    }
}

} // namespace

const char* lineName(ContactValueKind kind)
{
    switch (kind) {
    case ContactValueKind::email:
        return "EMAIL";
    case ContactValueKind::phone:
        return "TEL";
    case ContactValueKind::url:
        return "URL";
    }
    return "";
}

std::optional<Node> readableLine(const ContentDocument& document, Node card, std::string_view name)
{
    for (const Node node : document.lines(card, name)) {
        if (document.read(node))
            return node;
    }
    return std::nullopt;
}

std::optional<Node> labelLine(const ContentDocument& document, Node card, const std::string& group)
{
    if (group.empty())
        return std::nullopt;
    for (const Node node : document.lines(card, "X-ABLabel")) {
        const auto line = document.read(node);
        if (line && ascii::equalsIgnoringCase(line->group, group))
            return node;
    }
    return std::nullopt;
}

std::vector<Node> valueLines(const ContentDocument& document, Node card, ContactValueKind kind)
{
    std::vector<Node> lines = document.lines(card, lineName(kind));
    std::erase_if(lines, [&](Node node) {
        const auto line = document.read(node);
        return !line || line->value.empty();
    });
    return lines;
}

std::string composedName(const Contact& contact)
{
    const std::string& first = contact.field(ContactField::firstName);
    const std::string& last = contact.field(ContactField::lastName);
    const std::string& organization = contact.field(ContactField::organization);
    if (!first.empty() || !last.empty())
        return first.empty() || last.empty() ? first + last : first + " " + last;
    if (!organization.empty())
        return organization;
    for (const auto& values : contact.values) {
        if (!values.empty())
            return values.front().value;
    }
    return contact.field(ContactField::nickname);
}

Contact readContact(const ContentDocument& document, Node card)
{
    Contact contact;
    contact.uid = document.valueOf(card, "UID").value_or("");
    constexpr std::string_view kUuid = "urn:uuid:";
    if (contact.uid.starts_with(kUuid))
        contact.uid.erase(0, kUuid.size());
    readTexts(document, card, contact);
    readValues(document, card, contact);
    readKind(document, card, contact);
    contact.birthday = document.valueOf(card, "BDAY").value_or("");
    contact.name = onOneLine(textOf(document, card, "FN"));
    if (contact.name.empty())
        contact.name = composedName(contact);
    return contact;
}

} // namespace mervo::desk
