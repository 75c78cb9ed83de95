#include "core/foundation/StringMap.h"

#include "platform/unicode.h"

#include <nlohmann/json.hpp>

namespace mervo {

namespace {

/// Collects members while they are read and stops at the first thing that is no text, so that nothing is built of
/// a document that will be refused.
class MemberReader final : public nlohmann::json_sax<nlohmann::json> {
public:
    StringMap::Pairs pairs;

    bool null() override { return false; }
    bool boolean(bool) override { return false; }
    bool number_integer(number_integer_t) override { return false; }
    bool number_unsigned(number_unsigned_t) override { return false; }
    bool number_float(number_float_t, const string_t&) override { return false; }
    bool binary(binary_t&) override { return false; }
    bool start_array(std::size_t) override { return false; }
    bool end_array() override { return false; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

    bool start_object(std::size_t) override { return !std::exchange(inside_, true); }
    bool end_object() override { return true; }
    bool key(string_t& name) override
    {
        name_ = std::move(name);
        return true;
    }
    bool string(string_t& value) override
    {
        if (inside_)
            pairs.emplace_back(std::move(name_), std::move(value));
        return inside_;
    }

private:
    bool inside_ = false;
    std::string name_;
};

/// Reads the form that we write ourselves when no text needs an escape, which is nearly every row: setting up a parser
/// for each rule would cost more than the rest of the gate's work. Gives up at the first byte of any other form.
class PlainReader {
public:
    explicit PlainReader(std::string_view json)
        : rest_(json)
    {
    }

    std::optional<StringMap::Pairs> read()
    {
        StringMap::Pairs pairs;
        if (!take('{'))
            return std::nullopt;
        while (!rest_.starts_with('}')) {
            std::string_view key, value;
            const bool whole = (pairs.empty() || take(',')) && takeText(key) && take(':') && takeText(value);
            if (!whole)
                return std::nullopt;
            pairs.emplace_back(key, value);
        }
        return rest_.size() == 1 ? std::optional(std::move(pairs)) : std::nullopt;
    }

private:
    bool take(char letter)
    {
        const bool found = rest_.starts_with(letter);
        rest_.remove_prefix(found ? 1 : 0);
        return found;
    }

    bool takeText(std::string_view& text)
    {
        if (!take('"'))
            return false;
        std::size_t length = 0;
        while (length < rest_.size() && isPlain(rest_[length]))
            ++length;
        text = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return take('"');
    }

    static bool isPlain(char letter) { return letter >= 0x20 && letter < 0x7F && letter != '"' && letter != '\\'; }

    std::string_view rest_;
};

} // namespace

std::optional<StringMap::Pairs> StringMap::decodePairs(std::string_view json)
{
    if (auto pairs = PlainReader(json).read())
        return pairs;
    MemberReader reader;
    if (!nlohmann::json::sax_parse(json, &reader))
        return std::nullopt;
    return std::move(reader.pairs);
}

std::optional<std::string> StringMap::encodePairs(
    const std::vector<std::pair<std::string_view, std::string_view>>& pairs)
{
    std::string json = "{";
    for (const auto& [key, value] : pairs) {
        if (!platform::isValidUtf8(key) || !platform::isValidUtf8(value))
            return std::nullopt;
        if (json.size() > 1)
            json += ',';
        json += nlohmann::json(key).dump();
        json += ':';
        json += nlohmann::json(value).dump();
    }
    json += '}';
    return json;
}

} // namespace mervo
