#include "core/foundation/JsonText.h"

#include "core/foundation/Json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace mervo::JsonText {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// Places in the text: the name begins, ends; the value begins, ends (one past the last byte).
struct Member {
    std::string name;
    std::size_t begin, nameEnd, value, end;
};

std::size_t skipBlanks(std::string_view text, std::size_t at)
{
    return std::min(text.find_first_not_of(kBlanks, at), text.size());
}

/// Past the closing quotation mark of the string that begins here.
std::size_t endOfString(std::string_view text, std::size_t at)
{
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\')
            ++at;
    }
    return std::min(at + 1, text.size());
}

/// Past an object or an array.
std::size_t endOfNest(std::string_view text, std::size_t at)
{
    std::size_t depth = 0;
    while (at < text.size()) {
        const char c = text[at];
        at = c == '"' ? endOfString(text, at) : at + 1;
        if (c == '{' || c == '[') {
            ++depth;
        } else if ((c == '}' || c == ']') && --depth == 0) {
            break;
        }
    }
    return at;
}

std::size_t endOfValue(std::string_view text, std::size_t at)
{
    if (at < text.size() && text[at] == '"')
        return endOfString(text, at);
    if (at < text.size() && (text[at] == '{' || text[at] == '['))
        return endOfNest(text, at);
    return std::min(text.find_first_of(",]} \t\r\n", at), text.size());
}

/// Behind the comma after a value that ends here, if there is one, and the blanks.
std::size_t nextAfter(std::string_view text, std::size_t end)
{
    end = skipBlanks(text, end);
    return end < text.size() && text[end] == ',' ? skipBlanks(text, end + 1) : end;
}

std::vector<Member> members(std::string_view object)
{
    std::vector<Member> found;
    std::size_t at = skipBlanks(object, object.find('{') + 1);
    while (at < object.size() && object[at] == '"') {
        Member member{{}, at, endOfString(object, at), 0, 0};
        const auto name = parsedJson<nlohmann::json>(object.substr(at, member.nameEnd - at));
        member.name = name.is_string() ? name.get<std::string>() : "";
        member.value = skipBlanks(object, skipBlanks(object, member.nameEnd) + 1);
        member.end = endOfValue(object, member.value);
        at = nextAfter(object, member.end);
        found.push_back(std::move(member));
    }
    return found;
}

std::string added(std::string_view object, std::string_view name, std::string_view value)
{
    const std::string word = nlohmann::json(name).dump();
    std::string text(object);
    const auto all = members(object);
    if (all.empty())
        return text.insert(object.find('{') + 1, word + ":" + std::string(value));
    const Member& last = all.back();
    const std::size_t before = object.find_last_not_of(kBlanks, last.begin - 1) + 1;
    const std::string lead(object.substr(before, last.begin - before));
    const std::string colon(object.substr(last.nameEnd, last.value - last.nameEnd));
    return text.insert(last.end, "," + lead + word + colon + std::string(value));
}

} // namespace

std::optional<std::string_view> value(std::string_view object, std::string_view name)
{
    std::optional<std::string_view> found;
    for (const Member& member : members(object)) {
        if (member.name == name)
            found = object.substr(member.value, member.end - member.value);
    }
    return found;
}

std::string with(std::string_view object, std::string_view name, std::string_view value)
{
    std::string text;
    std::size_t done = 0;
    for (const Member& member : members(object)) {
        if (member.name != name)
            continue;
        text.append(object.substr(done, member.value - done)).append(value);
        done = member.end;
    }
    return done == 0 ? added(object, name, value) : text.append(object.substr(done));
}

std::string without(std::string_view object, std::string_view name)
{
    std::string text;
    std::size_t previousEnd = 0;
    bool isFirst = true;
    const auto all = members(object);
    for (const Member& member : all) {
        // What is left stands behind the brace or, with the comma, behind what is left before it.
        const std::string_view gap = object.substr(previousEnd, member.begin - previousEnd);
        if (previousEnd == 0) {
            text = gap;
        } else if (!isFirst && member.name != name) {
            text += gap;
        }
        if (member.name != name) {
            text += object.substr(member.begin, member.end - member.begin);
            isFirst = false;
        }
        previousEnd = member.end;
    }
    return text.append(object.substr(previousEnd));
}

std::vector<std::string_view> elements(std::string_view array)
{
    std::vector<std::string_view> found;
    std::size_t at = skipBlanks(array, 1);
    while (at < array.size() && array[at] != ']') {
        const std::size_t end = endOfValue(array, at);
        found.push_back(array.substr(at, end - at));
        at = nextAfter(array, end);
    }
    return found;
}

} // namespace mervo::JsonText
