#include "platform/desk/mail/Submission.h"

#include "platform/desk/mail/MailError.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <fmt/format.h>

namespace mervo::desk {

void submit(const MailAccountSettings& account, const std::string& message)
{
    const std::string& name = account.sendmail.front();
    const std::filesystem::path program = platform::findProgram(name);
    if (program.empty()) {
        throw MailError(
            fmt::format("The message was not sent: the program \u201c{}\u201d of the account \u201c{}\u201d "
                        "is not there; see \"sendmail\" in desk.toml.",
                name, account.name));
    }
    platform::Command command{.program = program,
        .arguments = {account.sendmail.begin() + 1, account.sendmail.end()},
        .input = message,
        .ownSession = false}; // whoever ends this script ends what sends for it
    try {
        const platform::Outcome outcome = platform::run(command);
        if (outcome.status != 0)
            throw MailError(fmt::format("The message was not sent: {}", howItEnded(name, outcome)));
    } catch (const platform::NotStarted& error) {
        throw MailError(fmt::format("The message was not sent: {} cannot be started ({}).", name, error.what()));
    }
}

} // namespace mervo::desk
