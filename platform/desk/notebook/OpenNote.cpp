#include "platform/desk/notebook/OpenNote.h"

#include "platform/desk/notebook/NoteError.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <chrono>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

constexpr std::chrono::milliseconds kPatience{2000}; // a program that could not be started says so by then

} // namespace

void openNote(const std::filesystem::path& what)
{
    const std::filesystem::path program = platform::findProgram("xdg-open");
    if (program.empty())
        throw NoteError("The note cannot be opened: the desktop’s xdg-open is not installed (package xdg-utils).");
    try {
        const auto outcome =
            platform::runDetached({.program = program, .arguments = {what.string()}, .input = {}}, kPatience);
        if (outcome && outcome->status != 0) {
            throw NoteError(fmt::format("The note cannot be opened; is there a program for {} on this desktop? {}",
                what.filename().string(), howItEnded("xdg-open", *outcome)));
        }
    } catch (const platform::NotStarted& failure) {
        throw NoteError(fmt::format("The note cannot be opened: xdg-open cannot be started ({}).", failure.what()));
    }
}

} // namespace mervo::desk
