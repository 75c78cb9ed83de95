#include "platform/desk/mail/MailError.h"

#include <fmt/format.h>

namespace mervo::desk {

NoSuchAttachment::NoSuchAttachment(const std::string& path)
    : MailError(fmt::format("The file {} cannot be attached: it is not there, or it cannot be read.", path))
    , path_(path)
{
}

} // namespace mervo::desk
