#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Turns a message's content into text for an agent. The content is untrusted: every step takes time in proportion to
/// its length, whatever it holds.
namespace mervo::MailBody {

inline constexpr std::size_t byteCap = 8192;

/// Without markup, quoted history and blanks at the ends; at most `byteCap` bytes, and a note of what was cut.
std::string clean(const std::string& text);

/// What `clean` removes besides markup, in sentences: the quoted history. A cut at `byteCap` is said in the text
/// itself.
std::vector<std::string> omissions(const std::string& text);

/// Markup as plain text: blocks on lines of their own, common entities decoded, blanks normalised.
std::string stripHTMLToText(const std::string& text);

} // namespace mervo::MailBody
