#include "platform/jobs/Environment.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace mervo::jobs {

namespace {

constexpr std::array<std::string_view, 18> kNames{"HOME", "USER", "LOGNAME", "SHELL", "PATH", "LANG", "LANGUAGE", "TZ",
    "TZDIR", "TMPDIR", "DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "DESKTOP_SESSION",
    "SSH_AUTH_SOCK", "TERMINAL", "BROWSER"};
constexpr std::array<std::string_view, 2> kPrefixes{"LC_", "XDG_"};

} // namespace

bool isSessionVariable(std::string_view name) noexcept
{
    return std::ranges::find(kNames, name) != kNames.end()
        || std::ranges::any_of(kPrefixes, [&](std::string_view prefix) { return name.starts_with(prefix); });
}

void keepSessionVariables()
{
    std::vector<std::string> others;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string_view name = text.substr(0, text.find('='));
        if (!isSessionVariable(name))
            others.emplace_back(name);
    }
    for (const std::string& name : others)
        ::unsetenv(name.c_str());
}

} // namespace mervo::jobs
