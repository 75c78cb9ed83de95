// Any bytes as config.json: they decode to something, and what is written again reads back as the same. In an object
// one member can be set or taken away, and a parser finds nothing else changed.

#include "core/foundation/HarnessConfig.h"
#include "core/foundation/JsonText.h"

#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string_view>

namespace {

using Json = nlohmann::json;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void checkMembers(std::string_view text, Json object)
{
    for (const std::string_view name : {"autonomyMode", "a", ""}) {
        object[name] = "x";
        const std::string changed = mervo::JsonText::with(text, name, "\"x\"");
        require(Json::parse(changed, nullptr, false) == object);
        require(mervo::JsonText::value(changed, name) == "\"x\"");
        object.erase(name);
        require(Json::parse(mervo::JsonText::without(changed, name), nullptr, false) == object);
        object = Json::parse(text, nullptr, false); // each name starts from the bytes as they came
    }
}

void checkElements(const Json& object)
{
    for (const auto& [name, value] : object.items()) {
        if (!value.is_array())
            continue;
        const std::string array = value.dump(1, ' ', false, Json::error_handler_t::replace);
        const auto elements = mervo::JsonText::elements(array);
        require(elements.size() == value.size());
        for (std::size_t i = 0; i < elements.size(); ++i)
            require(Json::parse(elements[i], nullptr, false) == value[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const mervo::HarnessConfig config = mervo::HarnessConfig::decode(bytes);
    if (mervo::HarnessConfig::decode(config.encode()) != config)
        std::abort();
    const Json object = Json::parse(bytes, nullptr, false);
    if (object.is_object()) {
        checkMembers(bytes, object);
        checkElements(object);
    }
    return 0;
}
