#include "core/automations/model/RunPaths.h"

#include "core/automations/model/AutomationName.h"

#include <stdexcept>

namespace mervo {

RunPaths::RunPaths(const std::filesystem::path& home, std::string_view name)
    : home_(home)
    , name_(name)
{
    if (!AutomationName::isValid(name))
        throw std::invalid_argument(AutomationName::refusal(name));
}

std::filesystem::path RunPaths::tmuxSocket(const std::filesystem::path& home)
{
    return home / ".runtime/run/rondel.sock";
}

} // namespace mervo
