#include "core/tools/Arguments.h"

#include "core/foundation/Text.h"

#include <charconv>

namespace mervo::Arguments {

const std::string& required(const Args& args, std::string_view key)
{
    const auto found = args.find(key);
    if (found == args.end() || found->second.empty())
        throw ToolError::missingArg(key);
    return found->second;
}

std::string optional(const Args& args, std::string_view key, std::string_view fallback)
{
    const auto found = args.find(key);
    return found == args.end() ? std::string(fallback) : found->second;
}

bool isPresent(const Args& args, std::string_view key)
{
    const auto found = args.find(key);
    return found != args.end() && !found->second.empty();
}

bool isOn(const Args& args, std::string_view key, bool fallback)
{
    const auto found = args.find(key);
    return found == args.end() ? fallback : !Text::equalsIgnoringCase(found->second, "false");
}

void requireOneOf(const Args& args, std::initializer_list<std::string_view> keys, std::string_view phrase)
{
    for (const auto key : keys) {
        if (isPresent(args, key))
            return;
    }
    throw ToolError::missingArg(phrase);
}

std::optional<std::int64_t> wholeNumber(std::string_view text)
{
    const bool plus = text.starts_with('+');
    if (plus)
        text.remove_prefix(1);
    if (plus && text.starts_with('-'))
        return std::nullopt;
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

std::string attachments(const Args& args)
{
    constexpr std::string_view kBlanks = " \t";
    std::vector<std::string> paths;
    for (const auto& field : Text::split(optional(args, "attachments"), ',')) {
        const auto first = field.find_first_not_of(kBlanks);
        if (first != std::string::npos)
            paths.push_back(field.substr(first, field.find_last_not_of(kBlanks) - first + 1));
    }
    return Text::join(paths, "\n");
}

std::function<std::vector<Remark>(const Args&)> ignoringRecipient(const std::string& tool, const std::string& where)
{
    return [sentence = tool + " ignores to: it reaches only the owner's configured " + where](const Args& args) {
        return args.contains("to") ? std::vector{Remark::withoutEffect("to", sentence)} : std::vector<Remark>();
    };
}

Build acceptAll()
{
    return [](const Args&) { return Invocation{}; };
}

Build requiring(std::vector<std::string_view> keys)
{
    return [keys = std::move(keys)](const Args& args) {
        for (const auto key : keys)
            required(args, key);
        return Invocation{};
    };
}

} // namespace mervo::Arguments
