#include "platform/desktop_entry.h"

namespace mervo::platform {

std::string desktopExecWord(std::string_view word)
{
    std::string text = "\"";
    for (const char c : word) {
        if (c == '%') {
            text += "%%";
        } else if (c == '\\') {
            text += "\\\\\\\\";
        } else if (c == '"' || c == '`' || c == '$') {
            text += std::string("\\\\") + c;
        } else {
            text += c;
        }
    }
    return text + '"';
}

} // namespace mervo::platform
