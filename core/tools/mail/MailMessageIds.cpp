#include "core/tools/mail/MailMessageIds.h"

#include "core/foundation/Text.h"
#include "core/scripting/OSAScript.h"
#include "core/tools/mail/MailCriteria.h"
#include "core/tools/mail/MailScripts.h"

namespace mervo::MailMessageIds {

Gathered gather(const std::string& account, const std::string& mailbox, const Args& args)
{
    Args narrowed = args;
    narrowed["account"] = account;
    narrowed["mailbox"] = mailbox;
    const auto result = OSAScript::run(MailScripts::messageId(), MailCriteria::argv(narrowed));
    Gathered gathered{result.ok, {}, result.error};
    if (!result.ok)
        return gathered;
    for (const std::string& line : Text::split(result.output, '\n')) {
        if (const auto id = Text::trimmed(line); !id.empty())
            gathered.ids.emplace_back(id);
    }
    return gathered;
}

} // namespace mervo::MailMessageIds
