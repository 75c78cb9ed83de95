#include "platform/desk/eventstore/CollectionTitle.h"

#include "platform/desk/contentlines/ContentLine.h"
#include "platform/eventkit.h"

#include <algorithm>

namespace mervo::desk {

std::string folderName(const std::string& title)
{
    constexpr std::size_t kLongest = 100;
    std::string name;
    for (const char c : title)
        name += c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '_' : c;
    if (name.starts_with('.'))
        name.front() = '_';
    if (name.size() > kLongest) {
        name.resize(kLongest);
        while (!name.empty() && (static_cast<unsigned char>(name.back()) & 0x80U) != 0)
            name.pop_back(); // no half character
    }
    return name.empty() ? "_" : name;
}

std::string oneLine(const std::string& title)
{
    std::string line = title;
    std::ranges::replace_if(
        line, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    line = withoutControls(line);
    const std::size_t start = line.find_first_not_of(' ');
    if (start == std::string::npos)
        throw platform::EventStoreError("Nothing was changed: a title must not be empty.");
    return line.substr(start, line.find_last_not_of(' ') - start + 1);
}

} // namespace mervo::desk
