#pragma once

#include <string>
#include <string_view>

namespace mervo::desk {

/// The text of an unstructured header field, or of a phrase in a structured one: unfolded, encoded words (RFC 2047)
/// decoded, raw bytes taken as UTF-8 or else windows-1252, control characters turned into spaces.
///
/// Lenient where mail in the wild is: an encoded word may stand in the middle of other text, hold spaces, or split a
/// character with its neighbour in the same charset. A word that is broken beyond that stays as it is written.
std::string decodeHeaderText(std::string_view raw);

} // namespace mervo::desk
