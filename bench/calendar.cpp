/// Reads all items of a folder and does one thing with each: `bench-calendar parse|week FOLDER`. "parse" is what
/// libical takes to read them; "week" says what happens in the week from 2026-06-01.

#include "platform/desk/recurrence/Recurrences.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <libical/ical.h>
#include <string>
#include <string_view>

namespace {

std::size_t parse(const std::string& text)
{
    icalcomponent* calendar = icalparser_parse_string(text.c_str());
    const int events = calendar == nullptr ? 0 : icalcomponent_count_components(calendar, ICAL_VEVENT_COMPONENT);
    icalcomponent_free(calendar);
    return static_cast<std::size_t>(events);
}

std::size_t week(const std::string& text)
{
    return mervo::desk::occurrences(text, {1780272000, 1780876800}).all.size();
}

} // namespace

int main(int count, char** words)
{
    if (count != 3)
        return 2;
    const bool isParse = std::string_view(words[1]) == "parse";
    std::size_t found = 0;
    for (const auto& entry : std::filesystem::directory_iterator(words[2])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        found += isParse ? parse(text) : week(text);
    }
    std::cout << found << '\n';
    return found == 0 ? 1 : 0;
}
