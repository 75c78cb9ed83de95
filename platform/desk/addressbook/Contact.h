#pragma once

#include "platform/desk/contentlines/ContentDocument.h"

#include <optional>
#include <string>
#include <vector>

namespace mervo::desk {

/// What a contact has several of.
enum class ContactValueKind { email, phone, url };

struct ContactValue {
    std::string label; ///< "work", "home", "mobile", a word of the owner's; empty: none
    std::string value; ///< without "mailto:" and "tel:"
};

/// One text of a contact that can be set.
enum class ContactField {
    firstName,
    lastName,
    middleName,
    nickname,
    organization, ///< the first part of ORG
    department, ///< the second
    jobTitle,
    note
};
inline constexpr int kContactFields = 8;

/// One card, read. Texts are UTF-8; those that a line of output may show have no line ends.
struct Contact {
    std::string uid; ///< empty: the card has none
    std::string name; ///< FN; without one first and last name, the organization, or what else there is
    std::string fields[kContactFields]; ///< by ContactField
    std::vector<ContactValue> values[3]; ///< by ContactValueKind, in the order of the card
    std::string birthday; ///< BDAY as it is written
    bool isCompany = false;
    bool isGroup = false; ///< a list of others and nobody's card
    std::vector<std::string> members; ///< of a group: the UIDs

    const std::string& field(ContactField which) const { return fields[static_cast<int>(which)]; }
    const std::vector<ContactValue>& all(ContactValueKind kind) const { return values[static_cast<int>(kind)]; }
};

/// Reads a component VCARD. What cannot be read of it is left out.
Contact readContact(const ContentDocument& document, ContentDocument::Node card);

/// First and last name, else the organization, else the first address or number.
std::string composedName(const Contact& contact);

/// The first line of a name that can be read.
std::optional<ContentDocument::Node> readableLine(
    const ContentDocument& document, ContentDocument::Node card, std::string_view name);

/// "EMAIL", "TEL" or "URL".
const char* lineName(ContactValueKind kind);

/// The lines of a card that the values of a kind come from, in their order.
std::vector<ContentDocument::Node> valueLines(
    const ContentDocument& document, ContentDocument::Node card, ContactValueKind kind);

/// The line that gives the values of this line's group their label (X-ABLabel); nothing where there is none.
std::optional<ContentDocument::Node> labelLine(
    const ContentDocument& document, ContentDocument::Node card, const std::string& group);

} // namespace mervo::desk
