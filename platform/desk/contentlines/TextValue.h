#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Values of the type TEXT (RFC 5545, 3.3.11; RFC 6350, 3.4): a backslash stands before a comma, a semicolon, a
/// backslash, and "n" for a line end.
namespace mervo::desk {

/// Reads one value. A backslash before any other byte stands for itself.
std::string unescapedText(std::string_view value);

/// Writes one value: every kind of line end becomes "\n"; control characters other than the tab, which no line can
/// hold, are left out.
std::string escapedText(std::string_view text);

/// The parts between separators that no backslash stands before, each as it is written.
std::vector<std::string_view> splitValue(std::string_view value, char separator);

} // namespace mervo::desk
