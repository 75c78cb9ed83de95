#pragma once

#include <string>
#include <string_view>

/// The name of an automation: a file name, the tail of a job's label, a session's name, a word of command lines.
namespace mervo::AutomationName {

/// So long that every file name made of it fits into 255 bytes.
constexpr std::size_t kLongest = 200;

/// ASCII letters, digits, ".", "_" and "-" (`^[A-Za-z0-9._-]+$`), 200 at most; neither "." nor ".."; no "-" in front,
/// which programs would take for an option.
bool isValid(std::string_view name);

/// The sentence that refuses any other.
std::string refusal(std::string_view name);

/// Of its job: "org.mervolabs.rondel.<name>".
std::string jobLabel(std::string_view name);

/// Of its tmux session. tmux turns a dot into "_", by which two automations would share a session: it is "%2E" here.
std::string sessionName(std::string_view name);

} // namespace mervo::AutomationName
