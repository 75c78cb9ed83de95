#pragma once

#include "platform/desk/addressbook/Contact.h"

#include <string>
#include <string_view>

/// Changes of one card, which touch no line but those that they are about. Version 3.0 and 4.0 lines are written in
/// UTF-8; a card keeps its version.
namespace mervo::desk {

/// A card of version 3.0 with nothing but its UID.
std::string emptyCard(std::string_view uid);

/// Sets one text; an empty one is taken away. The name of the whole card (FN) follows first name, last name and, where
/// they are empty, organization.
void setContactField(
    ContentDocument& document, ContentDocument::Node card, ContactField field, const std::string& text);
void setCompany(ContentDocument& document, ContentDocument::Node card, bool isCompany);
/// "1985-04-12", or an empty text for none.
void setBirthday(ContentDocument& document, ContentDocument::Node card, const std::string& date);

/// Adds a value as the last of its kind.
void addContactValue(
    ContentDocument& document, ContentDocument::Node card, ContactValueKind kind, const ContactValue& value);
/// Changes one that is there, by its place among its kind. False when there is none at that place.
bool setContactValue(ContentDocument& document, ContentDocument::Node card, ContactValueKind kind, std::size_t index,
    const ContactValue& value);
bool removeContactValue(
    ContentDocument& document, ContentDocument::Node card, ContactValueKind kind, std::size_t index);

enum class Membership { member, none };
/// Whether the person with this UID belongs to a group.
void setMember(ContentDocument& document, ContentDocument::Node group, const std::string& uid, Membership membership);

/// What every written card must have: its name, and when it was written ("20260301T081500Z").
void finishCard(ContentDocument& document, ContentDocument::Node card, std::string_view revision);

} // namespace mervo::desk
