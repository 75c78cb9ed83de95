#include "core/foundation/ServiceError.h"
#include "core/imap/IMAPClient.h"
#include "core/secrets/Keychain.h"
#include "core/tools/mail/MailArchiveService.h"
#include "frontends/cli/Commands.h"
#include "platform/terminal_input.h"

#include <fmt/format.h>

namespace mervo::cli {

namespace {

constexpr std::string_view kHelp =
    R"(Keeps the app password with which mail.archive logs in to a mail server. It lies in the desktop's secret service;
no command prints it.

  set    asks for the password unseen, or reads a line of input, and keeps it
  test   logs in to the server of this address, and out again

Examples:
  mervo secret set me@gmail.com
  mervo secret test me@gmail.com
)";

void requireAddress(const std::string& email)
{
    if (email.find('@') == std::string::npos)
        throw UsageError(fmt::format("\"{}\" is no e-mail address", email));
}

platform::Secret askFor(const std::string& email, Io& io)
{
    if (platform::isTerminalInput())
        return platform::readHidden(fmt::format("App password of {}: ", email));
    platform::Secret line = io.secretInput();
    line.shorten(line.view().find_first_of("\r\n"));
    return line;
}

void set(const std::string& email, Io& io)
{
    const platform::Secret password = askFor(email, io);
    if (password.empty())
        throw ServiceError("no password was given, and nothing was changed");
    Keychain::setPassword(password, email);
    io.out(fmt::format("the app password of {} is kept\n", email));
}

void test(const std::string& email, Io& io)
{
    const auto account = MailArchiveService::imapAccountOfAddress(email);
    if (!account) {
        throw ServiceError(fmt::format(
            "{} is no account of config.json (\"imapAccounts\") and no Gmail account; add it there first", email));
    }
    const auto password = Keychain::password(account->email);
    if (!password) {
        throw ServiceError(
            Keychain::trouble(account->email)
                .value_or(fmt::format("there is no app password of {0}; keep one with: mervo secret set {0}", email)));
    }
    IMAPClient::verifyLogin(account->host, MailArchiveService::portOf(*account), account->email, *password);
    io.out(fmt::format("{} accepts the app password of {}\n", account->host, email));
}

ExitCode run(const Arguments& arguments, Io& io)
{
    if (arguments.words.size() != 2)
        throw UsageError("a word and an address are needed: set or test, and the e-mail address");
    const std::string& verb = arguments.words[0];
    if (verb != "set" && verb != "test")
        throw UsageError(fmt::format("\"{}\" is not known here; there are set and test", verb));
    requireAddress(arguments.words[1]);
    (verb == "set" ? set : test)(arguments.words[1], io);
    return ExitCode::done;
}

} // namespace

constinit const Command kSecret{
    "secret", "set|test <email>", "keep the app password of a mail account, or try it", kHelp, {}, 2, run};

} // namespace mervo::cli
