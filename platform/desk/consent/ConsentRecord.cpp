#include "platform/desk/consent/ConsentRecord.h"

#include "platform/desk/settings/Places.h"
#include "platform/files.h"
#include "platform/lock.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

namespace mervo::desk {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLongest = 1024 * 1024; // bytes
constexpr std::chrono::seconds kPatience{10};

constexpr std::array<std::pair<std::string_view, Decision>, 4> kWords{{{"allowed", Decision::allowed},
    {"refused", Decision::refused}, {"restricted", Decision::restricted}, {"write-only", Decision::writeOnly}}};

Decision decisionOf(const Json& value)
{
    const auto* word = value.get_ptr<const std::string*>();
    if (word == nullptr)
        return Decision::undecided;
    const auto* found =
        std::ranges::find(kWords, std::string_view(*word), [](const auto& entry) { return entry.first; });
    return found == kWords.end() ? Decision::undecided : found->second;
}

std::string_view wordFor(Decision decision)
{
    const auto* found = std::ranges::find(kWords, decision, [](const auto& entry) { return entry.second; });
    return found == kWords.end() ? std::string_view() : found->first;
}

[[noreturn]] void fail(const std::filesystem::path& file, std::string_view why)
{
    throw ConsentError(fmt::format("The record of consent {} {}.", file.string(), why));
}

/// An empty object where there is no file.
Json read(const std::filesystem::path& file)
{
    std::error_code why;
    const auto text = platform::readFile(file, kLongest, &why);
    if (!text && (why == std::errc::no_such_file_or_directory || why == std::errc::not_a_directory))
        return Json::object();
    if (!text)
        fail(file, fmt::format("cannot be read ({})", why.message()));
    Json record = Json::parse(*text, nullptr, false);
    if (!record.is_object())
        fail(file, "is damaged: it must be one JSON object, such as {\"com.apple.mail\": \"allowed\"}");
    return record;
}

platform::FileLock lock(const std::filesystem::path& file)
{
    if (const auto error = platform::createPrivateFolder(file.parent_path()))
        fail(file, fmt::format("cannot be written ({})", error.message()));
    std::error_code why;
    auto held = platform::FileLock::acquire(std::filesystem::path(file).replace_extension("lock"), kPatience, why);
    if (!held)
        fail(file, fmt::format("cannot be locked ({})", why.message()));
    return *std::move(held);
}

} // namespace

ConsentRecord::ConsentRecord(std::filesystem::path file)
    : file_(std::move(file))
{
}

ConsentRecord ConsentRecord::ofDesk()
{
    return ConsentRecord(dataFolder() / "consent.json");
}

Decision ConsentRecord::of(const std::string& scope) const
{
    const Json record = read(file_);
    const auto found = record.find(scope);
    return found == record.end() ? Decision::undecided : decisionOf(*found);
}

std::vector<std::pair<std::string, Decision>> ConsentRecord::all() const
{
    std::vector<std::pair<std::string, Decision>> decided;
    const Json record = read(file_);
    for (const auto& [scope, value] : record.items()) {
        if (const Decision decision = decisionOf(value); decision != Decision::undecided)
            decided.emplace_back(scope, decision);
    }
    return decided;
}

Decision ConsentRecord::decide(const std::string& scope, Decision answer) const
{
    const platform::FileLock held = lock(file_);
    Json record = read(file_);
    if (const auto found = record.find(scope); found != record.end()) {
        if (const Decision before = decisionOf(*found); before != Decision::undecided)
            return before;
    }
    record[scope] = wordFor(answer);
    const std::string text = record.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (const auto error = platform::replaceFile(file_, text))
        fail(file_, fmt::format("cannot be written ({})", error.message()));
    return answer;
}

} // namespace mervo::desk
