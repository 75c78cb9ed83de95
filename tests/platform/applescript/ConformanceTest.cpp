#include "platform/process.h"
#include "tests/support/Files.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

/// One script, what it is given and what the program must answer.
struct Case {
    std::string name;
    std::string script;
    std::vector<std::string> arguments;
    std::string output;
    int status = 0;
    std::string failure; // last line of standard error from the kind of error on; * stands for any text
    bool isSure = true;
    bool onStandardInput = false;
};

/// For the words of a failure.
void PrintTo(const Case& instance, std::ostream* out)
{
    *out << instance.name;
}

std::vector<Case> allCases()
{
    std::ifstream file(std::string(MERVO_SOURCE_DIR) + "/tests/platform/applescript/cases.json");
    std::vector<Case> cases;
    for (const json& entry : json::parse(file)) {
        cases.push_back({entry.at("name"), entry.at("script"), entry.at("argv"), entry.at("stdout"), entry.at("exit"),
            entry.at("stderr_tail"), entry.at("confidence") == "sure", entry.value("via", "") == "stdin"});
    }
    return cases;
}

bool matches(std::string_view pattern, std::string_view text)
{
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos)
        return pattern == text;
    if (!text.starts_with(pattern.substr(0, star)))
        return false;
    for (std::size_t skip = star; skip <= text.size(); ++skip) {
        if (matches(pattern.substr(star + 1), text.substr(skip)))
            return true;
    }
    return false;
}

std::string failureOf(const std::string& error)
{
    const std::size_t end = error.find_last_not_of('\n');
    const std::size_t start = error.rfind('\n', end) == std::string::npos ? 0 : error.rfind('\n', end) + 1;
    const std::string line = end == std::string::npos ? std::string() : error.substr(start, end + 1 - start);
    const std::size_t kind = std::min(line.find("syntax error"), line.find("execution error"));
    return kind == std::string::npos ? std::string() : line.substr(kind);
}

class Conformance : public testing::TestWithParam<Case> { };

TEST_P(Conformance, answers)
{
    const Case& expected = GetParam();
    mervo::platform::Command command{OSASCRIPT_BARE, {}, {}};
    const mervo::test::TempDir folder;
    const std::string file = (folder / "case.applescript").string();
    mervo::test::writeFile(file, expected.script);
    command.arguments = {expected.onStandardInput ? "-" : file};
    if (expected.onStandardInput)
        command.input = expected.script;
    command.arguments.insert(command.arguments.end(), expected.arguments.begin(), expected.arguments.end());
    const mervo::platform::Outcome outcome = mervo::platform::run(command);

    EXPECT_EQ(outcome.status, expected.status) << outcome.error;
    std::string output = outcome.output;
    if (!output.empty() && output.back() == '\n')
        output.pop_back();
    EXPECT_EQ(output, expected.output);
    EXPECT_TRUE(matches(expected.failure, failureOf(outcome.error))) << outcome.error;
}

std::string nameOf(const testing::TestParamInfo<Case>& instance)
{
    std::string name = (instance.param.isSure ? "sure_" : "likely_") + instance.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Cases, Conformance, testing::ValuesIn(allCases()), nameOf);

} // namespace
