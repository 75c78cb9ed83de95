#include "core/tools/mail/MailCount.h"

#include "core/foundation/Text.h"
#include "core/scripting/OSAScript.h"
#include "core/tools/Arguments.h"
#include "core/tools/mail/MailCriteria.h"
#include "core/tools/mail/MailScripts.h"

#include <fmt/format.h>

namespace mervo::MailCount {

std::optional<std::string> line(std::string_view counted)
{
    constexpr double kMegabytesOfKilobyte = 0.0009765625;
    const auto parts = Text::split(counted, '|');
    if (parts.size() != 2)
        return std::nullopt;
    const auto messages = Arguments::wholeNumber(parts[0]);
    const auto kilobytes = Arguments::wholeNumber(parts[1]);
    if (!messages || !kilobytes)
        return std::nullopt;
    return fmt::format("{} message(s), {:.1f} MB", *messages, static_cast<double>(*kilobytes) * kMegabytesOfKilobyte);
}

std::optional<std::string> preview(const Args& args, std::string_view suffix)
{
    const auto result = OSAScript::run(MailScripts::count(), MailCriteria::argv(args));
    auto counted = result.ok ? line(result.output) : std::nullopt;
    if (counted)
        *counted += suffix;
    return counted;
}

} // namespace mervo::MailCount
