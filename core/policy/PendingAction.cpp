#include "core/foundation/ServiceError.h"
#include "core/policy/PendingStore.h"

#include <nlohmann/json.hpp>

namespace mervo {

namespace {

using Json = nlohmann::json;

std::optional<std::string> text(const Json& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string())
        return std::nullopt;
    return found->get<std::string>();
}

std::optional<Args> texts(const Json& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_object())
        return std::nullopt;
    Args args;
    for (const auto& [name, value] : found->items()) {
        if (!value.is_string())
            return std::nullopt;
        args.emplace(name, value.get<std::string>());
    }
    return args;
}

bool isAbsent(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found == object.end() || found->is_null();
}

} // namespace

std::string PendingAction::encode() const
{
    nlohmann::ordered_json object;
    object["id"] = id;
    object["tool"] = tool;
    object["args"] = args;
    object["summary"] = summary;
    object["createdAt"] = createdAt;
    if (preview)
        object["preview"] = *preview;
    try {
        return object.dump();
    } catch (const nlohmann::json::exception&) {
        throw ServiceError("the call holds a text that is not valid UTF-8, which the queue cannot keep");
    }
}

std::optional<PendingAction> PendingAction::decode(std::string_view json)
{
    const Json object = Json::parse(json, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    auto id = text(object, "id"), tool = text(object, "tool"), summary = text(object, "summary"),
         createdAt = text(object, "createdAt"), preview = text(object, "preview");
    auto args = texts(object, "args");
    const bool whole = id && tool && summary && createdAt && args && (preview || isAbsent(object, "preview"));
    if (!whole)
        return std::nullopt;
    return PendingAction{*std::move(id), *std::move(tool), *std::move(args), *std::move(summary), *std::move(createdAt),
        std::move(preview)};
}

} // namespace mervo
