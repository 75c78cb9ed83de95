#include "core/automations/model/AutomationFolder.h"

#include "core/automations/model/LoopObject.h"
#include "core/automations/model/RunLock.h"
#include "core/automations/model/RunState.h"
#include "platform/files.h"

#include <exception>
#include <nlohmann/json.hpp>

namespace mervo::AutomationFolder {

namespace {

namespace fs = std::filesystem;

void addState(Automation& automation, const fs::path& home)
{
    const auto file = runtimeFile(home, "state", automation.name, ".json");
    const RunState state = file ? RunState::read(*file) : RunState{};
    automation.enabled = state.enabled;
    automation.lastRun = state.lastRun;
    automation.lastExit = state.lastExit;
    automation.running = isRunning(home, automation.name);
}

std::optional<Automation> read(const fs::path& loopFile, const fs::path& home)
{
    const auto loop = LoopObject::read(loopFile);
    auto automation = loop ? LoopObject::automation(*loop) : std::nullopt;
    if (!automation)
        return std::nullopt;
    if (auto instructions = platform::readFile(loopFile.parent_path() / "AGENT.md"))
        automation->prompt = std::move(instructions);
    addState(*automation, home);
    return automation;
}

} // namespace

std::optional<Automation> load(const fs::path& loopFile, const fs::path& home) noexcept
{
    try {
        return read(loopFile, home);
    } catch (const std::exception&) {
        return std::nullopt; // a value that no field can hold
    }
}

bool isRunning(const fs::path& home, std::string_view name)
{
    const auto lock = runtimeFile(home, "run", name, ".lock.d");
    return lock && RunLock::livingHolder(*lock / "pid");
}

std::optional<fs::path> runtimeFile(
    const fs::path& home, std::string_view folder, std::string_view name, std::string_view ending)
{
    if (name.empty() || name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
        return std::nullopt;
    return home / ".runtime" / folder / (std::string(name) + std::string(ending));
}

} // namespace mervo::AutomationFolder
