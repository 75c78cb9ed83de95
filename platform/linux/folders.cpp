#include "platform/folders.h"

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace mervo::platform {

namespace {

constexpr std::size_t kLongestEntry = 64 * 1024;

std::optional<std::filesystem::path> environmentPath(const char* name)
{
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    return value;
}

/// The home folder in a row of the user database that `find` fetches.
template <typename Find>
std::optional<std::filesystem::path> homeInDatabase(Find&& find)
{
    std::vector<char> texts(kLongestEntry);
    passwd entry{};
    passwd* found = nullptr;
    if (find(&entry, texts.data(), texts.size(), &found) != 0 || found == nullptr)
        return std::nullopt;
    return found->pw_dir;
}

/// By the XDG base directory rules: a variable that is empty or holds a relative path counts as unset.
std::filesystem::path baseFolder(const char* variable, std::string_view belowHome)
{
    auto folder = environmentPath(variable);
    return folder && folder->is_absolute() ? *std::move(folder) : userHome() / belowHome;
}

} // namespace

std::filesystem::path userHome()
{
    if (auto home = environmentPath("HOME"))
        return *std::move(home);
    const auto find = [](passwd* entry, char* texts, std::size_t size, passwd** found) {
        return getpwuid_r(geteuid(), entry, texts, size, found);
    };
    return homeInDatabase(find).value_or("/");
}

std::filesystem::path applicationSupport()
{
    return baseFolder("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path configurationFolder()
{
    return baseFolder("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path expandTilde(std::string_view path)
{
    if (!path.starts_with('~'))
        return path;
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string user(path.substr(1, end - 1));
    const auto find = [&](passwd* entry, char* texts, std::size_t size, passwd** found) {
        return getpwnam_r(user.c_str(), entry, texts, size, found);
    };
    const auto home = user.empty() ? userHome() : homeInDatabase(find);
    if (!home)
        return path;
    const std::string_view rest = path.substr(std::min(path.find_first_not_of('/', end), path.size()));
    return rest.empty() ? *home : *home / rest;
}

} // namespace mervo::platform
