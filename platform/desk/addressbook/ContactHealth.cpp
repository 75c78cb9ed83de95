#include "platform/desk/addressbook/ContactHealth.h"

#include "platform/desk/addressbook/AddressBook.h"
#include "platform/desk/addressbook/ContactSettings.h"
#include "platform/desk/health/Findings.h"

#include <filesystem>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kId = "desk.contacts";
constexpr const char* kLabel = "Contacts";
constexpr std::size_t kNamed = 5; // of the damaged files; the rest is counted

std::string named(const std::vector<DamagedCard>& damaged)
{
    std::string text;
    for (std::size_t index = 0; index < damaged.size() && index < kNamed; ++index) {
        text += fmt::format("{}{} ({})", index == 0 ? "" : ", ", damaged[index].file.string(), damaged[index].why);
    }
    return damaged.size() > kNamed ? fmt::format("{} and {} more", text, damaged.size() - kNamed) : text;
}

Finding examine(const fs::path& folder)
{
    std::error_code error;
    const auto status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found && !fs::is_symlink(folder, error)) {
        return makeFinding(kId, kLabel, fmt::format("none at {}: there are no contacts yet", folder.string()));
    }
    if (error || !fs::is_directory(status)) {
        return makeFinding(kId, kLabel, fmt::format("{} is no folder that can be read", folder.string()),
            fmt::format("Correct \"path\" of [contacts] in desk.toml, or make {} a folder of yours.", folder.string()));
    }
    AddressBook book(folder);
    const std::size_t count = book.cards().size();
    const std::string where = fmt::format("{} ({} {})", folder.string(), count, count == 1 ? "card" : "cards");
    if (book.damaged().empty())
        return makeFinding(kId, kLabel, where);
    return makeFinding(kId, kLabel, fmt::format("{}; cannot be read: {}", where, named(book.damaged())),
        "Mend these files or take them out of the folder; the other contacts are not affected.");
}

} // namespace

std::vector<Finding> examineContactSettings(const Configuration& configuration)
{
    try {
        return {examine(contactFolder(configuration))};
    } catch (const std::exception& error) {
        return {makeFinding(kId, kLabel, error.what(), "Make the folder of the contacts readable and writable.")};
    }
}

} // namespace mervo::desk
