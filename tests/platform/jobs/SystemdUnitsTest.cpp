#include "platform/jobs/SystemdUnits.h"

#include "tests/support/Files.h"
#include "tests/support/Program.h"

#include <gtest/gtest.h>
#include <string>

namespace mervo::jobs {
namespace {

using test::Ended;
using test::TempDir;

/// systemd's own reader of unit files, without a manager. What it complains of is its result.
Ended verify(const TempDir& folder, const Job& job)
{
    const Units units = unitsOf(job);
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

/// systemd names a program that is not there as it has read it: its own reading of our quoting.
TEST(SystemdUnits, quoteWhatSystemdReadsBack)
{
    const TempDir folder;
    for (const char* name : {"a b", "100%h", "%%", "$HOME", "${HOME}", "$$", "für", ";", "@-+!:", "#"}) {
        Job missing = job();
        missing.arguments = {folder / name};
        const Ended ended = verify(folder, missing);
        EXPECT_NE(ended.err.find("Command " + missing.arguments.front() + " is not executable"), std::string::npos)
            << name << ": " << ended.err;
    }
}

TEST(SystemdUnits, leaveProgramsThatSystemdRefusesToTheShell)
{
    const TempDir folder;
    for (const char* name : {"back\\slash", "\"q\"", "it's", "a\tb", "end\\"}) {
        Job odd = job();
        odd.arguments = {folder / name, "%n"};
        const Ended ended = verify(folder, odd);
        EXPECT_EQ(ended.status, 0) << name << ": " << ended.err;
    }
    Job odd = job();
    odd.arguments = {"/a\"b", "$1"};
    EXPECT_NE(
        unitsOf(odd).service.find(R"(ExecStart=":/bin/sh" "-c" "exec \"$0\" \"$@\"" "/a\"b" "$1")"), std::string::npos);
}

TEST(SystemdUnits, ofAJobWithoutTimesHaveNoTimer)
{
    EXPECT_FALSE(unitsOf(job()).timer);
}

TEST(SystemdUnits, refuseAPathThatCannotBeWritten)
{
    for (const char* path : {"/tmp/a\nExecStartPre=/bin/evil", "/tmp/end ", "/tmp/end\\", "/tmp/tab\t"}) {
        Job odd = job();
        odd.standardOutput = path;
        EXPECT_THROW(unitsOf(odd), NotWritable) << path;
        odd.standardOutput.clear();
        odd.workingDirectory = path;
        EXPECT_THROW(unitsOf(odd), NotWritable) << path;
    }
}

TEST(SystemdUnits, nameTheirPropertyListInOneLine)
{
    Job odd = job();
    odd.file = "/tmp/a\n[Service]\nExecStart=/bin/evil";
    EXPECT_EQ(propertyListOf(unitsOf(odd).service), "/tmp/a?[Service]?ExecStart=/bin/evil");
    EXPECT_FALSE(propertyListOf("[Unit]\nDescription=mine\n"));
}

} // namespace
} // namespace mervo::jobs
