#include "core/imap/ImapText.h"

#include "platform/ascii.h"

#include <charconv>

namespace mervo::ImapText {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

bool startsWith(std::string_view text, std::string_view word)
{
    return platform::ascii::equalsIgnoringCase(text.substr(0, word.size()), word);
}

/// Takes the first line off; the last one need not be ended.
std::string_view nextLine(std::string_view& text)
{
    const std::size_t end = text.find(kLineEnd);
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + kLineEnd.size());
    return line;
}

std::string_view nextWord(std::string_view& text)
{
    const std::size_t end = text.find(' ');
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return word;
}

bool hasAllFlag(std::string_view line)
{
    const std::size_t open = line.find('('), close = line.find(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return false;
    std::string_view flags = line.substr(open + 1, close - open - 1);
    while (!flags.empty()) {
        const std::string_view flag = nextWord(flags);
        if (flag.size() == 4 && startsWith(flag, "\\ALL"))
            return true;
    }
    return false;
}

/// A folder's name ends its line: within the last two quotes, or as the last word where it needs none.
std::string folderName(std::string_view line)
{
    if (!line.ends_with('"'))
        return std::string(line.substr(line.rfind(' ') + 1));
    line.remove_suffix(1);
    return std::string(line.substr(line.rfind('"') + 1));
}

template <typename Text>
Text quotedAs(std::string_view text)
{
    Text result(std::string_view("\""));
    for (const char& c : text) {
        if (c == '\\' || c == '"')
            result.append(std::string_view("\\"));
        result.append(std::string_view(&c, 1));
    }
    result.append(std::string_view("\""));
    return result;
}

} // namespace

std::string quoted(std::string_view text)
{
    return quotedAs<std::string>(text);
}

platform::Secret quoted(const platform::Secret& text)
{
    return quotedAs<platform::Secret>(text.view());
}

bool isQuotable(std::string_view text) noexcept
{
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

std::optional<std::string_view> taggedLine(std::string_view answer, std::string_view tag, std::size_t& from)
{
    while (true) {
        const std::size_t end = answer.find(kLineEnd, from);
        if (end == std::string_view::npos)
            return std::nullopt;
        const std::string_view line = answer.substr(from, end - from);
        if (line.size() > tag.size() && line.starts_with(tag) && line[tag.size()] == ' ')
            return line;
        from = end + kLineEnd.size();
    }
}

bool isOk(std::string_view taggedLine, std::string_view tag)
{
    return taggedLine.size() > tag.size() && startsWith(taggedLine.substr(tag.size() + 1), "OK");
}

std::optional<std::string> allMailFolder(std::string_view answer)
{
    while (!answer.empty()) {
        const std::string_view line = nextLine(answer);
        if (startsWith(line, "* LIST") && hasAllFlag(line))
            return folderName(line);
    }
    return std::nullopt;
}

std::vector<std::uint64_t> searchHits(std::string_view answer)
{
    std::vector<std::uint64_t> hits;
    while (!answer.empty()) {
        std::string_view line = nextLine(answer);
        if (!startsWith(line, "* SEARCH"))
            continue;
        nextWord(line);
        nextWord(line);
        while (!line.empty()) {
            const std::string_view word = nextWord(line);
            std::uint64_t number = 0;
            const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
            if (failure == std::errc() && end == word.data() + word.size())
                hits.push_back(number);
        }
        break;
    }
    return hits;
}

} // namespace mervo::ImapText
