#include "platform/desk/applications/mail/OpenMessage.h"

#include "platform/desk/mail/MailError.h"
#include "platform/desk/mail/Maildir.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/desk/settings/Places.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::hours kKept{24};
constexpr std::chrono::milliseconds kPatience{2000}; // a program that could not be started says so by then
constexpr std::size_t kLongestName = 60; // bytes

/// What a file may be called on any system, from a subject.
std::string fileName(const std::string& subject)
{
    std::string name = subject.substr(0, kLongestName);
    std::replace_if(
        name.begin(), name.end(),
        [](unsigned char c) { return c >= 0x80 || (std::isalnum(c) == 0 && c != ' ' && c != '-'); }, '_');
    const std::string base = newMaildirBase();
    return fmt::format("{} {}.eml", name.empty() ? "message" : name, base.substr(0, base.rfind('.')));
}

void removeOld(const fs::path& folder)
{
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const auto written = entry.last_write_time(error);
        if (!error && written < fs::file_time_type::clock::now() - kKept)
            fs::remove(entry.path(), error);
    }
}

} // namespace

void openMessage(std::string_view message, const std::string& subject)
{
    const fs::path program = platform::findProgram("xdg-open");
    if (program.empty())
        throw MailError("The message cannot be opened: the desktop’s xdg-open is not installed (package xdg-utils).");
    const fs::path folder = cacheFolder() / "opened";
    std::error_code error = platform::createPrivateFolder(folder);
    removeOld(folder);
    const fs::path file = folder / fileName(subject);
    if (!error)
        error = platform::replaceFile(file, message, platform::Keep::whileRunning);
    if (error)
        throw MailError(fmt::format("{} cannot be written: {}.", file.string(), error.message()));
    try {
        const auto outcome =
            platform::runDetached({.program = program, .arguments = {file.string()}, .input = {}}, kPatience);
        if (outcome && outcome->status != 0) {
            throw MailError(
                fmt::format("The message cannot be opened; is there a mail program for message/rfc822 on this "
                            "desktop? {}",
                    howItEnded("xdg-open", *outcome)));
        }
    } catch (const platform::NotStarted& failure) {
        throw MailError(fmt::format("The message cannot be opened: xdg-open cannot be started ({}).", failure.what()));
    }
}

} // namespace mervo::desk
