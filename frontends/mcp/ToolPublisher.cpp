#include "frontends/mcp/ToolPublisher.h"

#include "core/catalogue/Catalogue.h"
#include "core/foundation/Json.h"
#include "core/foundation/Text.h"
#include "platform/ascii.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace mervo::mcp {

using OrderedJson = nlohmann::ordered_json;

namespace {

constexpr std::array kFamilyTitles = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"cal", "Calendar"},
    {"imessage", "Messages"},
    {"auto", "Automations"},
    {"app", "Applications"},
    {"reminder", "Reminders"},
    {"note", "Notes"},
    {"contact", "Contacts"},
});

/// Families that stay within the owner's own machine. Every other one may meet strangers: mail and messages carry
/// their words in and the owner's out.
constexpr std::array kClosedFamilies = std::to_array<std::string_view>(
    {"cal", "reminder", "note", "contact", "finder", "app", "auto", "feedback", "how_it_works"});

std::string_view family(std::string_view id)
{
    return id.substr(0, id.find('.'));
}

bool meetsStrangers(std::string_view id)
{
    return std::find(kClosedFamilies.begin(), kClosedFamilies.end(), family(id)) == kClosedFamilies.end();
}

/// "replyAll" is "reply all", "how_it_works" is "how it works".
std::string words(std::string_view name)
{
    std::string text;
    for (const char letter : name) {
        if (platform::ascii::isUpper(letter))
            text += ' ';
        text += letter == '_' ? ' ' : platform::ascii::lower(letter);
    }
    return text;
}

std::string capitalised(std::string text)
{
    if (!text.empty())
        text.front() = platform::ascii::upper(text.front());
    return text;
}

std::string_view wholePattern(const Format& format)
{
    return format.least >= 1 ? "^[1-9][0-9]*$" : format.least >= 0 ? "^[0-9]+$" : "^-?[0-9]+$";
}

/// Every argument is a text, also a number: its form is said by a pattern, for hosts that check.
OrderedJson property(const Argument& argument)
{
    using enum Format::Kind;
    OrderedJson property{{"type", "string"}, {"description", argument.help}};
    const Format& format = argument.format;
    switch (format.kind) {
    case text:
    case needle:
    case paths:
        break;
    case Format::Kind::words:
        property["enum"] = Text::split(format.words, '|');
        break;
    case day:
        property["format"] = "date";
        break;
    case moment:
        property["pattern"] = "^[0-9]{4}-[0-9]{2}-[0-9]{2}( [0-9]{2}:[0-9]{2})?$";
        break;
    case time:
        property["pattern"] = "^[0-9]{1,2}:[0-9]{1,2}$";
        break;
    case whole:
        property["pattern"] = wholePattern(format);
        break;
    case number:
        property["pattern"] = "^[0-9]*\\.?[0-9]+$";
        break;
    case hours:
        property["pattern"] = "^[0-9]{1,2}(,[0-9]{1,2})*$";
        break;
    }
    return property;
}

OrderedJson schema(const Tool& tool)
{
    OrderedJson properties = OrderedJson::object();
    OrderedJson required = OrderedJson::array();
    for (const Argument& argument : tool.arguments) {
        properties[std::string(argument.name)] = property(argument);
        if (argument.required)
            required.push_back(argument.name);
    }
    OrderedJson schema{{"type", "object"}, {"properties", std::move(properties)}};
    if (!required.empty())
        schema["required"] = std::move(required);
    schema["additionalProperties"] = false;
    return schema;
}

OrderedJson hints(const Tool& tool)
{
    return {{"readOnlyHint", tool.effect == Effect::read}, {"destructiveHint", tool.effect == Effect::destructive},
        {"idempotentHint", tool.effect == Effect::read}, {"openWorldHint", meetsStrangers(tool.id)}};
}

} // namespace

std::string ToolPublisher::title(std::string_view id)
{
    const std::string_view name = family(id);
    const auto known = std::find_if(
        kFamilyTitles.begin(), kFamilyTitles.end(), [&](const auto& entry) { return entry.first == name; });
    const std::string first = known == kFamilyTitles.end() ? capitalised(words(name)) : std::string(known->second);
    return name.size() == id.size() ? first : first + ": " + words(id.substr(name.size() + 1));
}

std::string ToolPublisher::describe(const Tool& tool, Naming naming)
{
    const OrderedJson entry{{"name", ToolNames::published(tool.id, naming)}, {"title", title(tool.id)},
        {"description", tool.summary}, {"inputSchema", schema(tool)}, {"annotations", hints(tool)}};
    return compactJson(entry);
}

const std::string& ToolPublisher::list(Naming naming, Era era)
{
    std::string& list = lists_[(naming == Naming::underscores ? 1U : 0U) + (era == Era::stateless ? 2U : 0U)];
    if (list.empty()) {
        list = "{";
        list += Protocol::resultOpening(era);
        if (era == Era::stateless)
            list += Protocol::kCacheHints;
        list += R"("tools":[)";
        for (const Tool* tool : Tools::all())
            list += describe(*tool, naming) + ',';
        list.back() = ']';
        list += '}';
    }
    return list;
}

} // namespace mervo::mcp
