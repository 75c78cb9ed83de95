// Prints when the events of files are: for the comparison with other programs.
//   occurrences-of START END < list of files      (seconds since 1970 UTC; one path a line)
// One line per occurrence: the path, start, end, "day" or "time", the component, the key; and "bounded" for a file
// whose rule had more.

#include "platform/desk/recurrence/Recurrences.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const mervo::platform::TimeSpan span{std::atoll(argv[1]), std::atoll(argv[2])};
    for (std::string path; std::getline(std::cin, path);) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        const mervo::desk::Occurrences found = mervo::desk::occurrences(text.str(), span);
        for (const mervo::desk::Occurrence& one : found.all) {
            std::cout << path << ' ' << one.start << ' ' << one.end << ' ' << (one.isAllDay ? "day" : "time") << ' '
                      << one.component << ' ' << (one.key.empty() ? "-" : one.key) << '\n';
        }
        if (found.isBounded)
            std::cout << path << " bounded\n";
    }
}
