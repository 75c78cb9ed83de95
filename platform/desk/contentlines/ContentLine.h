#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Single lines of calendars (RFC 5545, 3.1) and address cards (RFC 6350, 3.2 and 3.3): `name;parameter=value:value`,
/// with a group in front of the name in cards. Everything takes time in proportion to the bytes that it is given.
namespace mervo::desk {

struct LineParameter {
    std::string name; ///< as it is written; empty where a card of version 2.1 has the value alone
    std::vector<std::string> values; ///< without quotes, the escapes of RFC 6868 read
};

/// A line taken apart.
struct ContentLine {
    std::string group = {}; ///< "item1" of "item1.EMAIL"; empty: none
    std::string name = {}; ///< as it is written; compare it without regard to case
    std::vector<LineParameter> parameters = {};
    std::string value = {}; ///< as it is written, without folds; see TextValue.h for texts

    /// The first value of a parameter; nothing where there is none. Names are compared without regard to case.
    std::optional<std::string_view> parameter(std::string_view name) const;
};

/// The parts of an unfolded line. Nothing for a line that is none: it has no colon outside quotes, a name of other
/// bytes than letters, digits, "-" and "_", or a quote that does not end.
std::optional<ContentLine> readContentLine(std::string_view unfolded);

/// The unfolded text of a line. A parameter's value is quoted where it must be; control characters are left out.
std::string writeContentLine(const ContentLine& line);

/// The value without line ends and other control characters that no line can hold; the tab stays.
std::string withoutControls(std::string_view value);

/// The line's name alone, without its group; empty for a line that has none.
std::string_view contentLineName(std::string_view unfolded);

/// A line without its end and without folds (a line end and one blank or tab behind it, and the soft line ends of
/// quoted-printable).
std::string unfolded(std::string_view raw);

/// The line in pieces of at most 75 bytes, cut between characters, the last one with its line end too.
std::string folded(std::string_view unfolded, std::string_view lineEnd);

} // namespace mervo::desk
