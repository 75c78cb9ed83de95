#pragma once

#include "platform/desk/contentlines/ContentLine.h"

#include <string>
#include <string_view>
#include <vector>

/// Values of address cards as texts: the versions 2.1 (vCard, The Electronic Business Card, 1996: quoted-printable,
/// charsets), 3.0 (RFC 2426) and 4.0 (RFC 6350).
namespace mervo::desk {

/// The whole value of a line, in UTF-8.
std::string cardText(const ContentLine& line);

/// The parts of a structured value (N, ORG), in UTF-8, as many as there are.
std::vector<std::string> cardParts(const ContentLine& line);

/// The parts as they are to be written: those of a line without an encoding keep their bytes.
std::vector<std::string> writtenParts(const ContentLine& line);

/// The line with another value; quoted-printable and charset go, except that version 2.1 is told of UTF-8 where it is
/// needed. `value` is as it is written.
ContentLine withCardValue(ContentLine line, std::string value, std::string_view version);

/// The types of a line in lower case, from TYPE= and, in version 2.1, the parameters without a name.
std::vector<std::string> cardTypes(const ContentLine& line);

} // namespace mervo::desk
