#include "platform/process.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace {

using mervo::platform::Outcome;
using mervo::test::TempDir;
using mervo::test::writeFile;

Outcome osascript(std::vector<std::string> arguments, std::string input = "")
{
    return mervo::platform::run({OSASCRIPT_BARE, std::move(arguments), std::move(input)});
}

TEST(Program, linesFileOrStandardInput)
{
    EXPECT_EQ(osascript({"-e", "on run argv", "-e", "return argv", "-e", "end run", "a", "-b"}).output, "a, -b\n");
    EXPECT_EQ(osascript({}, "return 1").output, "1\n");
    EXPECT_EQ(osascript({"-l", "AppleScript", "-", "-e", "x"}, "on run argv\nreturn argv\nend run").output, "-e, x\n");
    const TempDir folder;
    writeFile(folder / "s.scpt",
        "\xEF\xBB\xBF#!/usr/bin/osascript\r\non run argv\r\nreturn (count of argv) & item 2 of argv\r\nend run\r\n");
    EXPECT_EQ(osascript({(folder / "s.scpt").string(), "", "\xFF\"\\"}).output, "2, \xFF\"\\\n");
    EXPECT_EQ(osascript({"-e", "return 1\rreturn 2"}).output, "1\n");
}

TEST(Program, theSourceForm)
{
    EXPECT_EQ(osascript({"-s", "s", "-e", "return {\"a\\\"b\", {x:1.5}, missing value, POSIX file \"/t\"}"}).output,
        "{\"a\\\"b\", {x:1.5}, missing value, POSIX file \"/t\"}\n");
    EXPECT_EQ(osascript({"-s", "h", "-e", "return {\"a\", {}, \"b\"}"}).output, "a, b\n");
}

TEST(Program, failuresKeepStandardOutputEmpty)
{
    const Outcome failed = osascript({"-e", "log \"é\"", "-e", "log {1, {2}}", "-e", "error \"bad\" number 7"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.error, "é\n1, 2\n21:41: execution error: bad (7)\n");

    const Outcome syntax = osascript({"-e", "log 1", "-e", "set é to 2"});
    EXPECT_EQ(syntax.status, 1);
    EXPECT_EQ(syntax.error, "10:11: syntax error: Expected expression but found “é”. (-2741)\n");

    const TempDir folder;
    const std::string file = (folder / "my script").string();
    writeFile(file, "return x");
    EXPECT_EQ(osascript({file}).error, file + ":7:8: execution error: The variable x is not defined. (-2753)\n");
    EXPECT_EQ(osascript({"-s", "o", "-e", "error \"m\""}).output, "0:9: execution error: m (-2700)\n");
}

TEST(Program, aCallOnStandardInput)
{
    const auto call = [](std::string_view bytes) { return osascript({"--call"}, std::string(bytes)); };
    using namespace std::string_view_literals;
    EXPECT_EQ(call("on run argv\nreturn argv\nend run\0a\0\0-e\0\n\xFF\0"sv).output, "a, , -e, \n\xFF\n");
    EXPECT_EQ(call("return 1\0"sv).output, "1\n");
    for (const auto half : {""sv, "return 1"sv, "return 1\0half an argum"sv}) {
        const Outcome refused = call(half);
        EXPECT_EQ(refused.error, "osascript: standard input: the call is not whole\n");
        EXPECT_EQ(refused.status, 1);
    }
}

TEST(Program, whatCannotBeRead)
{
    const Outcome missing = osascript({"/nonexistent/script"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.error, "osascript: /nonexistent/script: No such file or directory\n");
    EXPECT_EQ(osascript({"/"}).error, "osascript: /: Is a directory\n");
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"-x"}, {"-e"}, {"-l", "JavaScript", "-e", "1"}, {"-s", "q", "-e", "1"}, {"--help"}}) {
        const Outcome refused = osascript(arguments);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.error, "usage: osascript [-l AppleScript] [-s FLAGS] [-e LINE]... [FILE | -] [ARG]...\n");
    }
}

TEST(Program, noResultPrintsNothing)
{
    const Outcome outcome = osascript({"-e", "delay 0"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(osascript({"-e", "return \"\""}).output, "\n");
    EXPECT_EQ(osascript({}, "").output, "");
}

} // namespace
