#include "platform/desk/applications/finder/Reveal.h"

#include "platform/desk/session/Session.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <chrono>
#include <fmt/format.h>
#include <string>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kPatience{2000}; // a program that could not be started says so by then

/// Why it was not shown; empty when it was.
std::string askFileManager(const fs::path& item)
{
    try {
        return session().showItem(item.string());
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

/// Why the desktop did not open it; empty when it did.
std::string handOver(const fs::path& item)
{
    const fs::path program = platform::findProgram("xdg-open");
    if (program.empty())
        return "the desktop’s xdg-open is not installed (package xdg-utils)";
    try {
        const auto outcome = platform::runDetached({.program = program, .arguments = {item.string()}}, kPatience);
        return outcome && outcome->status != 0 ? howItEnded("xdg-open", *outcome) : std::string();
    } catch (const platform::NotStarted& error) {
        return fmt::format("xdg-open cannot be started ({})", error.what());
    }
}

} // namespace

void reveal(const fs::path& item)
{
    const std::string manager = askFileManager(item);
    if (manager.empty())
        return;
    const fs::path folder = item.has_filename() ? item.parent_path() : item.parent_path().parent_path();
    const std::string desktop = handOver(folder);
    if (!desktop.empty())
        throw FinderError(
            fmt::format("{} cannot be shown: no file manager answers ({}), and {}.", item.string(), manager, desktop));
}

void openItem(const fs::path& item)
{
    const std::string why = handOver(item);
    if (!why.empty())
        throw FinderError(fmt::format("{} cannot be opened: {}.", item.string(), why));
}

} // namespace mervo::desk
