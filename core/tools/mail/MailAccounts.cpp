#include "core/tools/mail/MailAccounts.h"

#include "core/foundation/Text.h"
#include "core/scripting/OSAScript.h"
#include "core/tools/mail/MailScripts.h"
#include "platform/unicode.h"

namespace mervo::MailAccounts {

namespace {

constexpr std::string_view kOtherGmailDomain = "googlemail";

/// At most three fields; tabs behind the second stay in the third.
std::vector<std::string> fields(const std::string& line)
{
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (int i = 0; i < 2; ++i) {
        const std::size_t tab = line.find('\t', from);
        if (tab == std::string::npos)
            break;
        parts.push_back(line.substr(from, tab - from));
        from = tab + 1;
    }
    parts.push_back(line.substr(from));
    return parts;
}

} // namespace

bool Info::isGmail() const
{
    const std::string host = platform::foldCase(server), address = platform::foldCase(email);
    return host.find(kGmailHost) != std::string::npos || host.find(kOtherGmailDomain) != std::string::npos
        || address.ends_with("@" + std::string(kGmailDomain));
}

std::vector<Info> parse(std::string_view lines)
{
    std::vector<Info> found;
    for (const std::string& line : Text::split(lines, '\n')) {
        const auto parts = fields(line);
        if (parts.size() == 3 && !parts[0].empty())
            found.push_back({parts[0], std::string(Text::trimmed(parts[1])), std::string(Text::trimmed(parts[2]))});
    }
    return found;
}

std::vector<Info> all()
{
    const auto result = OSAScript::run(MailScripts::accountServers(), {});
    return result.ok ? parse(result.output) : std::vector<Info>();
}

std::vector<Info> gmail()
{
    std::vector<Info> found = all();
    std::erase_if(found, [](const Info& account) { return !account.isGmail(); });
    return found;
}

} // namespace mervo::MailAccounts
