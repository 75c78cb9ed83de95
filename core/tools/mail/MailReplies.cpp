#include "core/tools/mail/MailReplies.h"

#include "core/scripting/OSAScript.h"
#include "core/tools/mail/MailBody.h"
#include "core/tools/mail/MailScripts.h"

namespace mervo::MailReplies {

std::string newest(
    const std::string& account, const std::string& mailbox, const std::string& tag, const std::string& address)
{
    const auto read = OSAScript::run(MailScripts::ownReply(), {account, mailbox, "", tag, address});
    return read.ok ? MailBody::clean(read.output) : std::string();
}

} // namespace mervo::MailReplies
