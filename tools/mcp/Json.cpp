#include "tools/mcp/Json.h"

#include "platform/unicode.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace mervo::mcp::json {

namespace {

using Kind = Value::Kind;

/// Builds the tree from the events of the parser.
class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
public:
    explicit TreeBuilder(Value& root)
        : root_(root)
    {
    }

    bool crowded() const { return crowded_; }

    bool null() override { return leaf(Kind::null, {}); }
    bool boolean(bool value) override { return leaf(Kind::boolean, value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return leaf(Kind::integer, std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return leaf(Kind::integer, std::to_string(value)); }
    bool string(string_t& value) override { return leaf(Kind::text, std::move(value)); }
    bool binary(binary_t&) override { return true; }

    bool number_float(number_float_t, const string_t& written) override
    {
        // An integer beyond 64 bits arrives here too, and stays an integer.
        const bool integer = written.find_first_of(".eE") == string_t::npos;
        return leaf(integer ? Kind::integer : Kind::real, written);
    }

    bool start_object(std::size_t) override { return open(Kind::object); }
    bool start_array(std::size_t) override { return open(Kind::list); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override
    {
        if (skipped_ > 0) {
            return true;
        }
        auto& members = open_.back()->members;
        if (members.size() < kMostMembers) {
            members.push_back({std::move(name), {}});
        } else {
            crowded_ = true;
            members.back() = {std::move(name), {}};
        }
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    Value& current() { return open_.empty() ? root_ : open_.back()->members.back().value; }

    bool leaf(Kind kind, std::string text)
    {
        if (skipped_ == 0) {
            current() = {kind, std::move(text), {}};
        }
        return true;
    }

    bool open(Kind kind)
    {
        if (skipped_ > 0) {
            ++skipped_;
            return true;
        }
        Value& value = current();
        value = {kind, {}, {}};
        if (kind == Kind::list || open_.size() == kDepth) {
            skipped_ = 1;
        } else {
            open_.push_back(&value); // stays where it is: its parent gets no further member while it is open
        }
        return true;
    }

    bool close()
    {
        if (skipped_ > 0) {
            --skipped_;
        } else {
            open_.pop_back();
        }
        return true;
    }

    Value& root_;
    std::vector<Value*> open_;
    std::size_t skipped_ = 0; ///< how many brackets are open inside a value whose inside is not kept
    bool crowded_ = false;
};

bool needsEscape(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
}

void appendEscaped(std::string& out, char byte)
{
    constexpr std::string_view kPlain = "\"\\\b\f\n\r\t";
    constexpr std::string_view kShort = "\"\\bfnrt";
    if (const std::size_t at = kPlain.find(byte); at != std::string_view::npos) {
        out += '\\';
        out += kShort[at];
    } else {
        constexpr std::string_view kDigits = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(byte);
        out.append("\\u00") += kDigits[code >> 4U];
        out += kDigits[code & 15U];
    }
}

} // namespace

const Value& Value::operator[](std::string_view name) const
{
    static const Value absent;
    const auto found =
        std::find_if(members.rbegin(), members.rend(), [&](const auto& member) { return member.name == name; });
    return found == members.rend() ? absent : found->value;
}

Value Value::take(std::string_view name)
{
    const auto found =
        std::find_if(members.rbegin(), members.rend(), [&](const auto& member) { return member.name == name; });
    return found == members.rend() ? Value{} : std::move(found->value);
}

Outcome parse(std::string_view text, Value& value)
{
    TreeBuilder builder(value);
    if (!nlohmann::json::sax_parse(text.data(), text.data() + text.size(), &builder)) {
        return Outcome::malformed;
    }
    return builder.crowded() ? Outcome::crowded : Outcome::read;
}

std::string quoted(std::string_view text)
{
    std::string out;
    if (platform::isValidUtf8(text)) {
        appendQuoted(out, text);
    } else {
        appendQuoted(out, platform::withValidUtf8(text));
    }
    return out;
}

void appendQuoted(std::string& out, std::string_view validText)
{
    out.reserve(out.size() + validText.size() + validText.size() / 16 + 2);
    out += '"';
    while (!validText.empty()) {
        const auto special = std::find_if(validText.begin(), validText.end(), needsEscape);
        const auto plain = static_cast<std::size_t>(special - validText.begin());
        out.append(validText.substr(0, plain));
        validText.remove_prefix(plain);
        if (!validText.empty()) {
            appendEscaped(out, validText.front());
            validText.remove_prefix(1);
        }
    }
    out += '"';
}

} // namespace mervo::mcp::json
