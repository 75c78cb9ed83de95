#pragma once

#include "platform/jobs/CalendarTime.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::jobs {

/// A program that is started at its times, as its property list describes it.
struct Job {
    std::string label; ///< letters, digits, ".", "_" and "-", not beginning with "." or "-"
    std::vector<std::string> arguments; ///< ProgramArguments: at least the program, an absolute path or a bare name
    std::optional<std::chrono::seconds> interval; ///< StartInterval
    std::vector<CalendarTime> calendar; ///< StartCalendarInterval
    std::string standardOutput, standardError; ///< absolute paths; empty where none is named
    std::string workingDirectory; ///< the same
    std::map<std::string, std::string> environment; ///< EnvironmentVariables
    bool runAtLoad = false; ///< RunAtLoad
    std::filesystem::path file; ///< the property list
};

/// Not a property list, or not one of a job. what() is what is wrong with it, without the file's name.
class JobError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ReadJob {
    Job job;
    std::vector<std::string> unknown; ///< the keys that mean nothing here, in order
};

/// Reads a property list in any of its forms. Throws JobError.
ReadJob readJob(const std::filesystem::path& file);

bool isLabel(std::string_view label) noexcept;

} // namespace mervo::jobs
