#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Text as the system compares, trims and cuts it. All texts are UTF-8.
namespace mervo::Text {

/// Equal, or contained, ignoring letter case: Unicode case folding, not only ASCII.
bool equalsIgnoringCase(std::string_view a, std::string_view b);
bool containsIgnoringCase(std::string_view text, std::string_view part);

/// Without white space and new lines at both ends (Unicode white space included).
std::string_view trimmed(std::string_view text);

/// The first `limit` characters (as a reader counts them) followed by "..." when there are more, else the text.
std::string cut(std::string_view text, std::size_t limit);

/// The first `limit` characters, without an ellipsis.
std::string_view firstCharacters(std::string_view text, std::size_t limit);

/// What no output for people contains as it stands: controls, and characters that take no room of their own or change
/// the direction or order in which the text around them is shown. The one list of them, for every form of output.
bool isHidden(char32_t point) noexcept;

/// Text from outside made safe to show: every hidden character but a line feed and a tab is written as its code point
/// in angle brackets ("<U+202E>"); bytes that are not UTF-8 likewise ("<0xFF>").
std::string visible(std::string_view text);
/// The same for a text that must stay on one line: line feeds and tabs are made visible too.
std::string visibleLine(std::string_view text);

/// A word that a shell takes as this text: "'" + text + "'", each "'" in it written as "'\\''".
std::string shellQuoted(std::string_view text);

std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& parts, std::string_view separator);

/// A fresh random UUID in upper-case hyphenated form, and its first 8 characters: the ids of actions and rules.
std::string newUuid();
std::string newShortId();

} // namespace mervo::Text
