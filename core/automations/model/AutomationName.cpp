#include "core/automations/model/AutomationName.h"

#include "core/foundation/Text.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::AutomationName {

namespace {

constexpr std::size_t kShown = 60; ///< characters of a refused name

bool isAllowed(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_'
        || c == '-';
}

} // namespace

bool isValid(std::string_view name)
{
    return !name.empty() && name.size() <= kLongest && name != "." && name != ".." && !name.starts_with('-')
        && std::ranges::all_of(name, isAllowed);
}

std::string refusal(std::string_view name)
{
    return fmt::format("'{}' cannot be the name of an automation: a name has letters (A-Z, a-z), digits, \".\", \"_\" "
                       "and \"-\", {} at most, begins with no \"-\" and is neither \".\" nor \"..\"",
        Text::visibleLine(Text::cut(name, kShown)), kLongest);
}

std::string jobLabel(std::string_view name)
{
    return "org.mervolabs.rondel." + std::string(name);
}

std::string sessionName(std::string_view name)
{
    return Text::join(Text::split(name, '.'), "%2E");
}

} // namespace mervo::AutomationName
