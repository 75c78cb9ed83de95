#include "platform/jobs/SystemdUnits.h"

#include "tests/support/Files.h"
#include "tests/support/Program.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/chrono.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

namespace mervo::jobs {
namespace {

using test::Ended;
using test::TempDir;
using namespace std::chrono;

constexpr WallTime kNow = sys_days(2026y / January / 1);

/// systemd's own reader of unit files, without a manager. What it complains of is its result.
Ended verify(const TempDir& folder, const Job& job)
{
    const Units units = unitsOf(job, kNow);
    std::filesystem::remove_all(folder.path() / "units");
    test::writeFile(folder.path() / "units/job.service", units.service);
    std::vector<std::string> words{
        "--user", "--man=no", "--recursive-errors=yes", "verify", folder.path() / "units/job.service"};
    if (units.timer) {
        test::writeFile(folder.path() / "units/job.timer", *units.timer);
        words.push_back(folder.path() / "units/job.timer");
    }
    return test::runProgram("/usr/bin/systemd-analyze", words,
        {{"HOME", folder.path()}, {"XDG_RUNTIME_DIR", folder.path()}, {"SYSTEMD_LOG_LEVEL", std::nullopt}});
}

Job job()
{
    Job job;
    job.label = "org.example.job";
    job.arguments = {"/bin/true"};
    job.file = "/home/alex/a.plist";
    return job;
}

TEST(SystemdUnits, areWhatSystemdReads)
{
    const TempDir folder;
    Job all = job();
    all.arguments = {"/bin/echo", "", ";", "-x", "@y", "$HOME ${HOME} $$", "100% %h", "\"q\" 'r' \\", "line\nnext\ttab",
        "für später", "#c", std::string(5000, 'a')};
    all.environment = {{"A", "b\"c"}, {"PLAIN", "x"}, {"LONG", "a b  %h $X \\n\n2"}, {"EMPTY", ""}};
    all.workingDirectory = "/tmp/a b%h\"c'$d";
    all.standardOutput = all.standardError = "/tmp/out 100%n.log";
    all.interval = std::chrono::seconds(90);
    all.calendar = {
        {}, {.minute = 5}, {.minute = 0, .hour = 8}, {.minute = 0, .hour = 9, .day = 6, .weekday = 7, .month = 12}};
    all.runAtLoad = true;
    const Ended ended = verify(folder, all);
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.err, "");
    Job broken = job();
    broken.calendar = {{.minute = 99}};
    EXPECT_NE(verify(folder, broken).status, 0) << "the check can fail";
}

/// systemd names a program that is not there as it has read it: its own reading of our quoting. Those that it refuses
/// are left to the shell, which is there.
TEST(SystemdUnits, quoteWhatSystemdReadsBackAndLeaveTheRestToTheShell)
{
    const TempDir folder;
    for (const char* name : {"a b", "100%h", "%%", "$HOME", "${HOME}", "$$", "für", ";", "@-+!:", "#", "back\\slash",
             "\"q\"", "it's", "a\tb", "end\\"}) {
        Job missing = job();
        missing.arguments = {folder / name, "%n"};
        const Ended ended = verify(folder, missing);
        const bool isRefused = std::string(name).find_first_of("\\\"'\t") != std::string::npos;
        EXPECT_EQ(ended.status == 0, isRefused) << name << ": " << ended.err;
        EXPECT_EQ(ended.err.find("Command " + missing.arguments.front() + " is not executable") == std::string::npos,
            isRefused)
            << name << ": " << ended.err;
    }
    Job odd = job();
    odd.arguments = {"/a\"b", "$1"};
    EXPECT_NE(unitsOf(odd, kNow).service.find(R"(ExecStart=":/bin/sh" "-c" "exec \"$0\" \"$@\"" "/a\"b" "$1")"),
        std::string::npos);
}

/// What systemd makes of a timer's calendar: its first runs, as it tells them in UTC.
std::vector<std::string> systemdsRuns(const std::string& timer, const char* zone, WallTime after, std::size_t count)
{
    std::vector<std::string> words{"calendar", "--iterations=" + std::to_string(count),
        "--base-time=@" + std::to_string(floor<seconds>(after).time_since_epoch().count())};
    const std::string key = "OnCalendar=";
    std::istringstream lines(timer);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key))
            words.push_back(line.substr(key.size()));
    }
    const Ended ended = test::runProgram("/usr/bin/systemd-analyze", words, {{"TZ", zone}});
    std::set<std::string> runs;
    const std::string mark = "(in UTC): Mon "; // what follows: "2026-03-30 00:30:00 UTC"
    for (std::size_t at = 0; (at = ended.out.find(mark.substr(0, 10), at)) != std::string::npos; at += mark.size())
        runs.insert(ended.out.substr(at + mark.size(), 19));
    std::vector<std::string> first(runs.begin(), runs.end());
    first.resize(std::min(first.size(), count));
    return first;
}

TEST(SystemdUnits, runAtTheTimesOfOurOwnCalendar)
{
    const std::vector<CalendarTime> rows[] = {{{.minute = 30, .hour = 2}},
        {{.minute = 10, .hour = 2}, {.minute = 15, .hour = 3}}, {{.minute = 30, .hour = 1}},
        {{.minute = 0, .hour = 3}, {.minute = 45, .hour = 2}}, {{.minute = 0, .hour = 8, .weekday = 0}},
        {{.minute = 0, .hour = 8, .weekday = 7}, {.minute = 30, .hour = 2, .weekday = 5}},
        {{.minute = 0, .hour = 9, .day = 6, .weekday = 3}}, {{.minute = 0, .hour = 0, .day = 31}},
        {{.minute = 59, .hour = 23, .day = 29, .month = 2}}, {{.minute = 5}}, {{.hour = 4}}, {{}}};
    constexpr std::size_t kRuns = 12;
    for (const char* zone : {"Europe/Paris", "America/New_York", "Australia/Lord_Howe"}) {
        ::setenv("TZ", zone, 1);
        // Before and on the days on which a clock changes in one of them.
        for (const WallTime after : {WallTime(sys_days(2026y / March / 7)), WallTime(sys_days(2026y / March / 28)),
                 WallTime(sys_days(2026y / October / 3)), WallTime(sys_days(2026y / October / 24) + 13h),
                 WallTime(sys_days(2026y / October / 31)), WallTime(sys_days(2027y / April / 3))}) {
            for (std::size_t row = 0; row < std::size(rows); ++row) {
                Job timed = job();
                timed.calendar = rows[row];
                std::vector<std::string> runs;
                const Calendar calendar = calendarOf(rows[row]);
                for (auto run = calendar(after); run && runs.size() < kRuns; run = calendar(*run))
                    runs.push_back(fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::gmtime(system_clock::to_time_t(*run))));
                EXPECT_EQ(systemdsRuns(*unitsOf(timed, kNow).timer, zone, after, kRuns), runs)
                    << zone << ", row " << row;
            }
        }
    }
    ::unsetenv("TZ");
}

TEST(SystemdUnits, refuseAPathThatCannotBeWritten)
{
    for (const char* path : {"/tmp/a\nExecStartPre=/bin/evil", "/tmp/end ", "/tmp/end\\", "/tmp/tab\t", "/tmp/\xFF"}) {
        Job odd = job();
        odd.standardOutput = path;
        EXPECT_THROW(unitsOf(odd, kNow), NotWritable) << path;
        odd.standardOutput.clear();
        odd.workingDirectory = path;
        EXPECT_THROW(unitsOf(odd, kNow), NotWritable) << path;
    }
}

TEST(SystemdUnits, nameTheirPropertyListInOneLineAndHaveNoTimerWithoutTimes)
{
    EXPECT_FALSE(unitsOf(job(), kNow).timer);
    Job odd = job();
    odd.file = "/tmp/a\n[Service]\nExecStart=/bin/evil";
    EXPECT_EQ(propertyListOf(unitsOf(odd, kNow).service), "/tmp/a?[Service]?ExecStart=/bin/evil");
    EXPECT_FALSE(propertyListOf("[Unit]\nDescription=mine\n"));
}

} // namespace
} // namespace mervo::jobs
