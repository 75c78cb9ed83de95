#include "core/automations/model/RunState.h"

#include "core/automations/model/LoopObject.h"
#include "core/foundation/Json.h"
#include "core/foundation/JsonMembers.h"
#include "platform/files.h"
#include "platform/lock.h"

namespace mervo {

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience(2);

/// Without the lock, when it cannot be had, another one's change may be lost: better than losing this one for sure.
std::error_code change(const fs::path& file, const Json& members) noexcept
try {
    if (const auto error = platform::createPrivateFolder(file.parent_path()))
        return error;
    std::error_code unlocked;
    const auto lock = platform::FileLock::acquire(file.parent_path() / ".lock", kPatience, unlocked);
    Json state = LoopObject::read(file).value_or(Json::object());
    state.update(members);
    return platform::replaceFile(file, compactJson(state));
} catch (const std::exception&) {
    return std::make_error_code(std::errc::not_enough_memory);
}

} // namespace

RunState RunState::read(const fs::path& file) noexcept
try {
    const Json object = LoopObject::read(file).value_or(Json::object());
    RunState state;
    state.enabled = JsonMembers::flag(object, "enabled").value_or(true);
    if (const auto lastRun = JsonMembers::text(object, "lastRun"))
        state.lastRun = Timestamps::date(*lastRun);
    state.lastExit = JsonMembers::wholeNumber(object, "lastExit");
    return state;
} catch (const std::exception&) {
    return {};
}

std::error_code RunState::setEnabled(const fs::path& file, bool enabled) noexcept
{
    return change(file, {{"enabled", enabled}});
}

std::error_code RunState::setLastRun(const fs::path& file, Timestamps::Time when, std::int64_t exitCode) noexcept
{
    return change(file, {{"lastRun", Timestamps::string(when)}, {"lastExit", exitCode}});
}

} // namespace mervo
