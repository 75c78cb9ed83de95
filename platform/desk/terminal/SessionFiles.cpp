#include "platform/desk/terminal/SessionFiles.h"

#include "platform/desk/settings/Places.h"
#include "platform/desk/terminal/TerminalError.h"
#include "platform/files.h"
#include "platform/process.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr std::string_view kSession = ".session";
constexpr std::string_view kRequest = ".request";
constexpr std::chrono::minutes kOld{1}; // longer than anybody waits for a window

fs::path folder()
{
    return dataFolder() / "terminals";
}

fs::path sessionFile(const std::string& id)
{
    return folder() / (id + std::string(kSession));
}

/// A request, or a session file that is not finished: either has a process at work for some seconds.
void removeWhenOld(const fs::path& file)
{
    std::error_code error;
    const auto written = fs::last_write_time(file, error);
    if (!error && written < fs::file_time_type::clock::now() - kOld)
        fs::remove(file, error);
}

/// Ids and the names in a registry are ours; anything else is passed over.
std::optional<Json> parsed(const fs::path& file)
{
    const auto bytes = platform::readFile(file);
    Json object = Json::parse(bytes.value_or(""), nullptr, false);
    return object.is_object() ? std::optional(std::move(object)) : std::nullopt;
}

} // namespace

std::string newSessionId()
{
    std::ifstream stream("/proc/sys/kernel/random/uuid");
    std::string id;
    if (!std::getline(stream, id) || id.empty())
        throw TerminalError("The system gives no random numbers.");
    return id;
}

fs::path writeRequest(const std::string& id, const SessionRequest& request)
{
    const fs::path file = folder() / (id + std::string(kRequest));
    const Json object{{"application", request.application}, {"text", request.text}};
    auto why = platform::createPrivateFolder(folder());
    if (!why)
        why = platform::createFile(file, object.dump(-1, ' ', false, Json::error_handler_t::replace));
    if (why)
        throw TerminalError(fmt::format("The file {} cannot be written: {}.", file.string(), why.message()));
    return file;
}

bool takeRequest(const fs::path& file) noexcept
{
    return ::unlink(file.c_str()) == 0;
}

bool isTaken(const fs::path& file) noexcept
{
    return ::access(file.c_str(), F_OK) != 0 && errno == ENOENT;
}

std::optional<SessionRequest> readRequest(const fs::path& file)
{
    const auto object = parsed(file);
    if (!object)
        return std::nullopt;
    try {
        return SessionRequest{object->at("application").get<std::string>(), object->at("text").get<std::string>()};
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

platform::HeldFile holdSession(const fs::path& requestFile, const SessionRecord& record)
{
    const Json object{{"application", record.application}, {"process", record.process}, {"tty", record.tty},
        {"window", record.window}};
    return platform::HeldFile::make(fs::path(requestFile).replace_extension(kSession), object.dump());
}

std::optional<SessionRecord> livingSession(const std::string& id)
{
    const fs::path file = sessionFile(id);
    if (const auto dead = platform::HeldFile::takeOver(file)) {
        dead->remove();
        return std::nullopt;
    }
    const auto object = parsed(file);
    if (!object)
        return std::nullopt;
    try {
        SessionRecord record{.id = id,
            .application = object->at("application").get<std::string>(),
            .process = object->at("process").get<pid_t>(),
            .tty = object->at("tty").get<std::string>(),
            .window = object->at("window").get<std::uint32_t>()};
        // Another looker may have taken over a dead one's file just now.
        return platform::isRunning(record.process) ? std::optional(std::move(record)) : std::nullopt;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

std::vector<SessionRecord> livingSessions(std::string_view application)
{
    std::vector<std::pair<fs::file_time_type, SessionRecord>> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder(), error), end; !error && entry != end; entry.increment(error)) {
        const fs::path& file = entry->path();
        if (file.extension() != kSession) {
            removeWhenOld(file);
            continue;
        }
        std::error_code ignored;
        const auto made = fs::last_write_time(file, ignored);
        auto session = livingSession(file.stem());
        if (session && (application.empty() || session->application == application))
            found.emplace_back(made, *std::move(session));
    }
    std::ranges::sort(found, std::greater(), [](const auto& each) { return std::tie(each.first, each.second.id); });
    std::vector<SessionRecord> sessions;
    for (auto& [made, session] : found)
        sessions.push_back(std::move(session));
    return sessions;
}

} // namespace mervo::desk
