#include "core/foundation/JsonMembers.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace mervo::JsonMembers {

namespace {

using Json = nlohmann::json;

constexpr double kFirstTooLarge = 0x1p63;

const Json* find(const Json& object, const char* key)
{
    const auto found = object.find(key); // the end for what is no object
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::int64_t> wholeNumber(const Json& value)
{
    if (!value.is_number() || (value.is_number_unsigned() && value.get<std::uint64_t>() > INT64_MAX))
        return std::nullopt;
    if (!value.is_number_float())
        return value.get<std::int64_t>();
    const double number = value.get<double>();
    if (std::trunc(number) != number || number < -kFirstTooLarge || number >= kFirstTooLarge)
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

} // namespace

std::optional<std::string> text(const Json& object, const char* key)
{
    const Json* value = find(object, key);
    return value != nullptr && value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

std::optional<bool> flag(const Json& object, const char* key)
{
    const Json* value = find(object, key);
    return value != nullptr && value->is_boolean() ? std::optional(value->get<bool>()) : std::nullopt;
}

std::optional<std::int64_t> wholeNumber(const Json& object, const char* key)
{
    const Json* value = find(object, key);
    return value == nullptr ? std::nullopt : wholeNumber(*value);
}

std::vector<std::int64_t> wholeNumbers(const Json& object, const char* key)
{
    std::vector<std::int64_t> found;
    const Json* list = find(object, key);
    if (list == nullptr || !list->is_array())
        return found;
    for (const Json& item : *list) {
        if (const auto number = wholeNumber(item))
            found.push_back(*number);
    }
    return found;
}

} // namespace mervo::JsonMembers
