#pragma once

#include <string>
#include <string_view>

namespace mervo::desk {

/// Opens a copy of a message in the desktop's mail program: programs recognise messages by the file name's extension,
/// which the files of a Maildir lack. The copies are in the cache folder and are removed after a day. Throws MailError
/// when the desktop has no program for it.
void openMessage(std::string_view message, const std::string& subject);

} // namespace mervo::desk
