#pragma once

#include "platform/desk/mail/MimeEngine.h"

namespace mervo::desk {

/// Writes a message as RFC 5322 with MIME: UTF-8, folded and encoded fields, file names by RFC 2231, lines ended by
/// LF as Maildirs have them. Throws MailError, NoSuchAttachment.
void writeMime(const MimeDraft& draft, int descriptor);

} // namespace mervo::desk
