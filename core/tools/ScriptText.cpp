#include "core/tools/ScriptText.h"

namespace mervo::ScriptText {

std::string assembled(std::initializer_list<std::string_view> fragments)
{
    std::string script;
    for (const auto fragment : fragments)
        script += fragment.substr(fragment.starts_with('\n') ? 1 : 0);
    return script;
}

} // namespace mervo::ScriptText
