#include "core/policy/RunningActs.h"

#include "core/foundation/Json.h"
#include "core/foundation/StoreBoundary.h"
#include "core/foundation/Text.h"
#include "core/foundation/Timestamps.h"
#include "platform/files.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <system_error>

namespace mervo {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr std::string_view kExtension = ".json";
constexpr std::string_view kUnfinished = ".new";
constexpr std::size_t kLongest = 128 * 1024 * 1024; ///< 16 MiB of arguments, at up to six bytes for one
constexpr std::chrono::minutes kOld{1};
constexpr std::string_view kEnding = "\n"; ///< behind the object: the row is being written
constexpr std::int64_t kRowsLookedThrough = 200;
constexpr std::string_view kEnded = "mervo was ended while this ran; it may have acted";

fs::path folder(const fs::path& home)
{
    return home / ".runtime" / "acts";
}

struct Act {
    std::string actor, tool, why, startedAt;
    Args args;
    bool ending = false;
};

std::string encode(const Act& act)
{
    const Json object{
        {"actor", act.actor}, {"args", act.args}, {"startedAt", act.startedAt}, {"tool", act.tool}, {"why", act.why}};
    return compactJson(object);
}

std::optional<Act> decode(const std::optional<std::string>& bytes)
{
    try {
        const Json object = Json::parse(bytes.value_or(""));
        return Act{object.at("actor").get<std::string>(), object.at("tool").get<std::string>(),
            object.at("why").get<std::string>(), object.value("startedAt", ""), object.at("args").get<Args>(),
            bytes->ends_with(kEnding)};
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

std::vector<fs::path> files(const fs::path& home, std::string_view extension)
{
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder(home), error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == extension)
            found.push_back(entry->path());
    }
    return found;
}

/// What was killed before its act began. The age keeps it from one that is just being made.
void removeUnfinished(const fs::path& home)
{
    for (const fs::path& file : files(home, kUnfinished)) {
        std::error_code error;
        const auto written = fs::last_write_time(file, error);
        if (!error && written < fs::file_time_type::clock::now() - kOld)
            fs::remove(file, error);
    }
}

bool isRowOf(const Act& act, const AuditEntry& row)
{
    const auto isKept = [&](const auto& argument) {
        const auto found = row.details.find(argument.first);
        return argument.first == "result" || (found != row.details.end() && found->second == argument.second);
    };
    return row.actor == act.actor && row.action == act.tool && row.timestamp >= act.startedAt
        && (row.outcome == "executed" || row.outcome == "error")
        && std::all_of(act.args.begin(), act.args.end(), isKept);
}

/// Whether a process that was killed while it wrote its row has come to the end of it.
bool hasRow(const Act& act, AuditLog& audit)
{
    const auto rows = act.ending ? audit.recent(kRowsLookedThrough) : std::vector<AuditEntry>{};
    return std::any_of(rows.begin(), rows.end(), [&](const AuditEntry& row) { return isRowOf(act, row); });
}

/// False when the trail does not take the row.
bool record(const fs::path& path, AuditLog& audit)
{
    const auto file = platform::HeldFile::takeOver(path);
    const auto act = file ? decode(file->read(kLongest)) : std::nullopt;
    if (!act)
        return true;
    if (hasRow(*act, audit))
        return file->remove();
    const std::string reason = std::string(kEnded) + (act->why.empty() ? "" : " (" + act->why + ")");
    return audit.log(act->actor, act->tool, std::nullopt, act->args, "error", reason) && file->remove();
}

} // namespace

RunningAct::RunningAct(
    const fs::path& home, const Tool& tool, const Args& args, std::string_view actor, std::string_view why) noexcept
{
    if (tool.effect == Effect::read)
        return;
    orElse("the running act could not be noted, so a kill in its middle would leave no row", false, [&] {
        for (const fs::path& made : {home / ".runtime", folder(home)}) {
            if (const auto error = platform::createPrivateFolder(made))
                throw std::system_error(error, made.string());
        }
        file_.emplace(platform::HeldFile::make(folder(home) / (Text::newUuid() + std::string(kExtension)),
            encode({std::string(actor), tool.id, std::string(why), Timestamps::now(), args})));
        return true;
    });
}

void RunningAct::ending() noexcept
{
    if (file_)
        file_->append(kEnding);
}

RunningAct::~RunningAct()
{
    if (file_)
        file_->remove();
}

void RunningActs::recordEnded(const fs::path& home, AuditLog& audit) noexcept
{
    if (!any(home))
        return;
    orElse("the acts of processes that were ended could not be looked through", false, [&] {
        removeUnfinished(home);
        for (const fs::path& file : files(home, kExtension)) {
            if (!record(file, audit))
                return false;
        }
        return true;
    });
}

bool RunningActs::any(const fs::path& home) noexcept
{
    std::error_code error;
    return fs::directory_iterator(folder(home), error) != fs::directory_iterator();
}

std::vector<fs::path> RunningActs::damaged(const fs::path& home)
{
    std::vector<fs::path> found;
    for (const fs::path& path : files(home, kExtension)) {
        const auto file = platform::HeldFile::takeOver(path);
        if (file && !decode(file->read(kLongest)))
            found.push_back(path);
    }
    return found;
}

} // namespace mervo
