#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace mervo::desk {

/// The processes of this user that run a program, which is a name or a path as a configuration or a desktop entry has
/// it.
///
/// A process runs the program that its executable is. A program that is a script runs as its interpreter with the
/// script as an argument, or starts another file of the same name (/usr/bin/thunderbird is a script that starts
/// /usr/lib/thunderbird/thunderbird). Of a program that cannot be found the file's name alone counts: it may lie inside
/// a container.
std::vector<pid_t> processesOf(const std::string& program);

} // namespace mervo::desk
