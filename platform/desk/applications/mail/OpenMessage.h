#pragma once

#include <string>
#include <string_view>

namespace mervo::desk {

/// Hands a message to the desktop's mail program, as a copy of its own: programs take a message for one by the ending
/// of its file, which files of a Maildir do not have. The copies lie in the cache folder and go away after a day.
/// Throws MailError when the desktop has no program for it.
void openMessage(std::string_view message, const std::string& subject);

} // namespace mervo::desk
