#pragma once

#include "platform/desk/mail/MimeEngine.h"

#include <string_view>

namespace mervo::desk {

/// Parses a whole message. The text is made of the parts that a reader would show: of alternatives the plain one,
/// of everything else one after the other. A part counts as attached when it says so, has a file name, or is no text;
/// pictures that belong to an HTML page and signatures do not count. Never throws.
MimeContent readMime(std::string_view message);

} // namespace mervo::desk
