#include "core/foundation/ServiceError.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"
#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <utility>

namespace mervo {

namespace {

using Json = nlohmann::json;

/// Takes an action's members out of a JSON text while it is read. Nothing else of the text is kept, so a file costs no
/// more memory than its own length, whatever it holds. Stops at the first member of a wrong type.
class ActionReader final : public nlohmann::json_sax<Json> {
public:
    /// Nothing when a member is missing.
    std::optional<PendingAction> action() &&
    {
        if (!id_ || !tool_ || !args_ || !summary_ || !createdAt_)
            return std::nullopt;
        return PendingAction{*std::move(id_), *std::move(tool_), *std::move(args_), *std::move(summary_),
            *std::move(createdAt_), std::move(preview_)};
    }

    bool string(std::string& value) override
    {
        if (isArgument()) {
            args_->insert_or_assign(argument_, std::move(value));
        } else if (std::optional<std::string>* field = textField()) {
            *field = std::move(value);
        } else {
            return isIgnored();
        }
        return true;
    }
    bool null() override { return isIgnored() || textField() == &preview_; }
    bool boolean(bool) override { return isIgnored(); }
    bool number_integer(std::int64_t) override { return isIgnored(); }
    bool number_unsigned(std::uint64_t) override { return isIgnored(); }
    bool number_float(double, const std::string&) override { return isIgnored(); }
    bool binary(Json::binary_t&) override { return false; }
    bool start_array(std::size_t) override { return isIgnored() && ++depth_ > 0; }
    bool end_array() override { return --depth_ > 0; }
    bool start_object(std::size_t) override
    {
        const bool ours = depth_ == 0 || isArgs();
        if (isArgs())
            args_.emplace();
        return (ours || isIgnored()) && ++depth_ > 0;
    }
    bool end_object() override { return --depth_ >= 0; }
    bool key(std::string& name) override
    {
        if (depth_ == 1) {
            field_ = std::move(name);
        } else if (isArgument()) {
            argument_ = std::move(name);
        }
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    bool isArgs() const { return depth_ == 1 && field_ == "args"; }
    bool isArgument() const { return depth_ == 2 && field_ == "args"; }
    /// What stands here is below a name that means nothing.
    bool isIgnored() { return depth_ > 0 && field_ != "args" && textField() == nullptr; }
    /// Where a text that stands here belongs; null when it is no member of ours.
    std::optional<std::string>* textField()
    {
        if (depth_ != 1)
            return nullptr;
        for (auto& [name, field] : fields_) {
            if (name == field_)
                return field;
        }
        return nullptr;
    }

    std::ptrdiff_t depth_ = 0;
    std::string field_, argument_;
    std::optional<std::string> id_, tool_, summary_, createdAt_, preview_;
    std::optional<Args> args_;
    const std::array<std::pair<std::string_view, std::optional<std::string>*>, 5> fields_{
        {{"id", &id_}, {"tool", &tool_}, {"summary", &summary_}, {"createdAt", &createdAt_}, {"preview", &preview_}}};
};

constexpr std::size_t kBytesOfACharacter = 16; ///< more than any that is written for a reader

/// The first bytes, cut between two code points.
std::string_view beginning(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return text;
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80)
        --most;
    return text.substr(0, most);
}

bool isPlain(std::string_view word)
{
    constexpr std::string_view kPlainSigns = "@%+,-./:_";
    return !word.empty() && std::ranges::all_of(word, [&](char c) {
        return platform::ascii::isDigit(c) || platform::ascii::isLetter(c)
            || kPlainSigns.find(c) != std::string_view::npos;
    });
}

std::string quotedUnlessPlain(std::string_view word)
{
    if (isPlain(word))
        return std::string(word);
    std::string escaped;
    for (const char c : word) {
        if (c == '"' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return '"' + Text::visibleLine(escaped) + '"';
}

} // namespace

std::string PendingAction::line(std::size_t limit) const
{
    const std::size_t mostBytes = limit * kBytesOfACharacter;
    std::size_t bytes = tool.size();
    std::string line = quotedUnlessPlain(beginning(tool, mostBytes));
    for (const auto& [key, value] : args) {
        bytes += key.size() + value.size() + 2; // with the blank and the sign between
        if (line.size() <= mostBytes)
            line += ' ' + quotedUnlessPlain(beginning(key, mostBytes)) + '=';
        if (line.size() <= mostBytes)
            line += quotedUnlessPlain(beginning(value, mostBytes));
    }
    const std::string_view shown = Text::firstCharacters(line, limit);
    const bool isWhole = std::max({bytes, line.size()}) <= mostBytes && shown.size() == line.size();
    return isWhole ? line : fmt::format("{}... ({} bytes)", shown, bytes);
}

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
    ActionReader reader;
    return Json::sax_parse(json, &reader) ? std::move(reader).action() : std::nullopt;
}

} // namespace mervo
