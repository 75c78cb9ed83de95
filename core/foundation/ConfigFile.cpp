#include "core/foundation/ConfigDir.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Json.h"
#include "core/foundation/JsonText.h"
#include "core/foundation/Text.h"
#include "platform/files.h"
#include "platform/lock.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

/// config.json as a file: how HarnessConfig is read from it and written into it.
namespace mervo {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

constexpr std::size_t kLongest = 1024 * 1024;
constexpr int kMostKept = 100; ///< files beside, before a person has to clear up
constexpr const char* kOlderKey = "yoloMode";
constexpr const char* kModeKey = "autonomyMode";
constexpr const char* kAccountsKey = "imapAccounts";

/// What ends an update; what() is the sentence.
struct NotChanged : std::runtime_error {
    using std::runtime_error::runtime_error;
};

fs::path configFile()
{
    return ConfigDir::url() / "config.json";
}

std::string unreadable(const fs::path& file, const std::error_code& why)
{
    return fmt::format("\"{}\" cannot be read: {}", file.string(), why.message());
}

/// The file's bytes, empty when there is none.
std::string readConfig(const fs::path& file)
{
    std::error_code why;
    auto text = platform::readFile(file, kLongest, &why);
    if (!text && why != std::errc::no_such_file_or_directory)
        throw NotChanged(unreadable(file, why) + "; it was not changed");
    return std::move(text).value_or("");
}

platform::FileLock lockHome(std::chrono::milliseconds patience)
{
    try {
        ConfigDir::ensureExists();
    } catch (const fs::filesystem_error& error) {
        throw NotChanged(
            fmt::format("the home \"{}\" cannot be created: {}", ConfigDir::url().string(), error.code().message()));
    }
    const fs::path file = ConfigDir::url() / ".lock";
    std::error_code why;
    if (auto lock = platform::FileLock::acquire(file, patience, why))
        return *std::move(lock);
    if (why != std::errc::timed_out) {
        throw NotChanged(
            fmt::format("\"{}\" could not be locked: {}; nothing was changed", file.string(), why.message()));
    }
    const std::string holder = platform::FileLock::lastHolder(file);
    throw NotChanged(
        fmt::format("\"{}\" has been held{} for {} s; nothing was changed. Try again, or end the process that holds it",
            file.string(), holder.empty() ? "" : " by process " + holder, patience.count() / 1000));
}

void replace(const fs::path& file, const std::string& text)
{
    if (text.size() > kLongest)
        throw NotChanged(fmt::format("\"{}\" would be longer than 1 MiB; it was not changed", file.string()));
    if (const auto error = platform::replaceFile(file, text)) {
        throw NotChanged(
            fmt::format("\"{}\" could not be written: {}; the old file stands", file.string(), error.message()));
    }
}

/// Keeps the bytes under a name that is free, or that keeps the same bytes already.
fs::path keepBeside(const fs::path& file, const std::string& bytes)
{
    for (int number = 1; number <= kMostKept; ++number) {
        fs::path kept = file.string() + ".damaged" + (number == 1 ? "" : "." + std::to_string(number));
        std::error_code error;
        if (!fs::exists(fs::symlink_status(kept, error))) {
            if ((error = platform::replaceFile(kept, bytes))) {
                throw NotChanged(fmt::format(
                    "\"{}\" cannot be taken over whole and could not be kept as \"{}\": {}; it was not changed",
                    file.string(), kept.string(), error.message()));
            }
            return kept;
        }
        if (platform::readFile(kept, kLongest) == bytes)
            return kept;
    }
    throw NotChanged(fmt::format(
        "there are {} files \"{}.damaged\" already; look at them and delete them", kMostKept, file.string()));
}

/// Each account of a list that can be used alone, with its text.
std::vector<std::pair<IMAPArchiveAccount, std::string_view>> accountsIn(std::string_view list)
{
    std::vector<std::pair<IMAPArchiveAccount, std::string_view>> found;
    for (const std::string_view text : JsonText::elements(list)) {
        for (const auto& account :
            HarnessConfig::decode(fmt::format("{{\"{}\":[{}]}}", kAccountsKey, text)).imapAccounts)
            found.emplace_back(account, text);
    }
    return found;
}

/// The list's text, in which an account that was there before keeps its own, with what else it says.
std::string accountsText(std::string_view object, const HarnessConfig& after)
{
    const std::string_view list = JsonText::value(object, kAccountsKey).value_or("");
    const auto before = list.starts_with('[') ? accountsIn(list) : decltype(accountsIn(list)){};
    std::vector<std::string> texts;
    for (const IMAPArchiveAccount& account : after.imapAccounts) {
        const auto same = std::ranges::find(before, account, [](const auto& one) { return one.first; });
        HarnessConfig alone;
        alone.imapAccounts = {account};
        texts.emplace_back(same != before.end()
                ? same->second
                : JsonText::elements(*JsonText::value(alone.encode(), kAccountsKey)).front());
    }
    return "[" + Text::join(texts, ",") + "]";
}

/// The object's text with what differs between the two configurations.
struct Edit {
    std::string text;
    bool losesSomething = false; ///< a value that could not be used was replaced
};
Edit edited(std::string text, const HarnessConfig& before, const HarnessConfig& after)
{
    const OrderedJson old = OrderedJson::parse(before.encode()), wanted = OrderedJson::parse(after.encode());
    Edit edit{std::move(text)};
    const bool isOlder = JsonText::value(edit.text, kOlderKey).has_value();
    for (const auto& [key, value] : wanted.items()) {
        const bool changes = !old.contains(key) || old[key] != value;
        if (!changes && !(isOlder && key == kModeKey))
            continue;
        const auto present = JsonText::value(edit.text, key);
        edit.losesSomething = edit.losesSomething || (present && !HarnessConfig::takes(key, *present));
        edit.text = JsonText::with(edit.text, key, key == kAccountsKey ? accountsText(edit.text, after) : value.dump());
    }
    for (const auto& [key, value] : old.items()) {
        if (!wanted.contains(key))
            edit.text = JsonText::without(edit.text, key);
    }
    edit.text = JsonText::without(edit.text, kOlderKey);
    return edit;
}

std::string keptNotice(const fs::path& file, const fs::path& kept, bool isObject)
{
    return fmt::format("\"{}\" {}; what it said is kept in \"{}\"", file.string(),
        isObject ? "had a value that could not be used" : "was no JSON object, and every setting had its default",
        kept.string());
}

/// Writes the change; gives the notice.
std::string write(
    const fs::path& file, const std::string& text, const HarnessConfig& before, const HarnessConfig& after)
{
    const bool isObject = parsedJson<Json>(text).is_object();
    const Edit edit = isObject ? edited(text, before, after) : Edit{after.encode(), !text.empty()};
    std::string notice = edit.losesSomething ? keptNotice(file, keepBeside(file, text), isObject) : "";
    replace(file, edit.text);
    return notice;
}

} // namespace

HarnessConfig HarnessConfig::load()
{
    try {
        const auto json = platform::readFile(configFile(), kLongest);
        return json ? decode(*json) : HarnessConfig{};
    } catch (const std::exception&) {
        return {};
    }
}

std::string HarnessConfig::complaint()
{
    const fs::path file = configFile();
    std::error_code why;
    const auto text = platform::readFile(file, kLongest, &why);
    if (text) {
        return parsedJson<Json>(*text).is_object()
            ? ""
            : fmt::format("\"{}\" is no JSON object; every setting counts as its default", file.string());
    }
    return why == std::errc::no_such_file_or_directory
        ? ""
        : unreadable(file, why) + "; every setting counts as its default";
}

bool HarnessConfig::takes(std::string_view key, std::string_view value)
{
    const Json written = parsedJson<Json>(value);
    if (written.is_null())
        return true;
    if (key == kOlderKey)
        return written.is_boolean();
    const std::string alone = fmt::format("{{{}:{}}}", Json(key).dump(), value);
    const Json read = Json::parse(decode(alone).encode());
    const auto found = read.find(key);
    if (found == read.end())
        return false;
    // What a list keeps of its entries is their number, since one bad entry empties it.
    return written.is_array() ? found->size() == written.size() : *found == written;
}

HarnessConfig::Update HarnessConfig::update(
    const std::function<void(HarnessConfig&)>& change, std::chrono::milliseconds patience)
{
    try {
        const auto lock = lockHome(patience);
        const fs::path file = configFile();
        const std::string text = readConfig(file);
        const HarnessConfig before = decode(text);
        HarnessConfig after = before;
        change(after);
        return {{}, after == before ? "" : write(file, text, before, after)};
    } catch (const NotChanged& reason) {
        return {reason.what(), {}};
    }
}

bool HarnessConfig::save() const
{
    try {
        const auto lock = lockHome(std::chrono::seconds(10));
        return !platform::replaceFile(configFile(), encode());
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace mervo
