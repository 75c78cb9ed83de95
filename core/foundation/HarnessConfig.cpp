#include "core/foundation/HarnessConfig.h"

#include "core/foundation/Json.h"
#include "core/foundation/JsonMembers.h"

#include <nlohmann/json.hpp>

namespace mervo {

namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

const Json* find(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

void read(const Json& object, const char* key, std::string& text)
{
    text = JsonMembers::text(object, key).value_or(text);
}

void read(const Json& object, const char* key, std::optional<std::string>& text)
{
    if (auto value = JsonMembers::text(object, key))
        text = std::move(value);
}

/// All four fields, or nothing.
std::optional<IMAPArchiveAccount> account(const Json& object)
{
    if (!object.is_object())
        return std::nullopt;
    std::optional<std::string> name, email, host;
    read(object, "mailAccountName", name);
    read(object, "email", email);
    read(object, "host", host);
    const auto port = JsonMembers::wholeNumber(object, "port");
    if (!name || !email || !host || !port)
        return std::nullopt;
    return IMAPArchiveAccount{*std::move(name), *std::move(email), *std::move(host), *port};
}

/// The whole list, or an empty one.
std::vector<IMAPArchiveAccount> accounts(const Json* list)
{
    std::vector<IMAPArchiveAccount> result;
    if (list == nullptr || !list->is_array())
        return result;
    for (const Json& entry : *list) {
        auto one = account(entry);
        if (!one)
            return {};
        result.push_back(*std::move(one));
    }
    return result;
}

AutonomyMode mode(const Json& object)
{
    std::string word;
    read(object, "autonomyMode", word);
    if (const auto known = autonomyMode(word))
        return *known;
    // What the switch before the slider left behind.
    const Json* yolo = find(object, "yoloMode");
    return yolo != nullptr && *yolo == true ? AutonomyMode::yolo : AutonomyMode::copilote;
}

OrderedJson encoded(const IMAPArchiveAccount& account)
{
    return {{"mailAccountName", account.mailAccountName}, {"email", account.email}, {"host", account.host},
        {"port", account.port}};
}

void write(OrderedJson& object, const char* key, const std::optional<std::string>& text)
{
    if (text)
        object[key] = *text;
}

} // namespace

HarnessConfig HarnessConfig::decode(std::string_view json)
{
    HarnessConfig config;
    const Json object = parsedJson<Json>(json);
    if (!object.is_object())
        return config;
    config.autonomyMode = mode(object);
    config.imapAccounts = accounts(find(object, "imapAccounts"));
    config.dailyMutationCap = JsonMembers::wholeNumber(object, "dailyMutationCap").value_or(config.dailyMutationCap);
    read(object, "rondelHome", config.rondelHome);
    read(object, "terminalApp", config.terminalApp);
    read(object, "notifyEmail", config.notifyEmail);
    read(object, "notifyIMessageHandle", config.notifyIMessageHandle);
    read(object, "askChannel", config.askChannel);
    read(object, "askCleanup", config.askCleanup);
    return config;
}

std::string HarnessConfig::encode() const
{
    OrderedJson object;
    object["autonomyMode"] = rawValue(autonomyMode);
    object["imapAccounts"] = OrderedJson::array();
    for (const IMAPArchiveAccount& account : imapAccounts)
        object["imapAccounts"].push_back(encoded(account));
    object["dailyMutationCap"] = dailyMutationCap;
    write(object, "rondelHome", rondelHome);
    write(object, "terminalApp", terminalApp);
    object["notifyEmail"] = notifyEmail;
    write(object, "notifyIMessageHandle", notifyIMessageHandle);
    object["askChannel"] = askChannel;
    object["askCleanup"] = askCleanup;
    // A byte that is no UTF-8 becomes U+FFFD: one bad text must not keep the other settings from being stored.
    return compactJson(object);
}

} // namespace mervo
