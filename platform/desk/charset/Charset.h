#pragma once

#include <string>
#include <string_view>

namespace mervo::desk {

/// Bytes in a charset as mail and address cards name it ("iso-8859-1", "gb2312", in any case), as UTF-8. Never fails:
/// bytes that the charset does not know become U+FFFD; with a charset that is unknown, empty or contradicted by the
/// bytes, they are taken as UTF-8 where they are well-formed, else as windows-1252.
std::string toUtf8(std::string_view bytes, std::string_view charset);

} // namespace mervo::desk
