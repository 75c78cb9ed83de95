#include "core/scripting/OSAScript.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

struct Case {
    const char* what;
    const char* raw;
    const char* cleaned;
};

const Case kCases[]{
    {"nothing", "", ""},
    {"only empty lines", "\n\n\n", ""},
    {"a marker, with the path before it",
        "/tmp/mervo-1.applescript:120:140: execution error: No such mailbox (-1728)\n",
        "execution error: No such mailbox (-1728)"},
    {"blanks at the end", "x: execution error: bad \t \n", "execution error: bad"},
    {"the last of several", "a: execution error: first\nb: execution error: second\n", "execution error: second"},
    {"a syntax error outranks a later execution error", "1: syntax error: here (-2741)\n2: execution error: there\n",
        "syntax error: here (-2741)"},
    {"a script error outranks an execution error", "2: execution error: there\n1: script error: here\n",
        "script error: here"},
    {"a marker next to noise on its line", "Connection invalid execution error: real\nConnection invalid\n",
        "execution error: real"},
    {"noise around the message", "TISFileInterrogator x\n  the message\t\nKeyboard Layouts y\nhiservices-xpcservice\n",
        "the message"},
    {"the last of several messages", "one\ntwo\nmessage reply handler\n", "two"},
    {"noise only", "Connection invalid a\nConnection Invalid b \n", "Connection Invalid b"},
    {"noise is found by its exact letters", "connection invalid\nKeyboard Layouts\n", "connection invalid"},
    {"bytes that are no UTF-8", "execution error: \xFF\n", "execution error: \xEF\xBF\xBD"},
    {"no line feed at the end", "execution error: x", "execution error: x"},
};

TEST(CleanedError, findsTheLineForPeople)
{
    for (const auto& [what, raw, cleaned] : kCases)
        EXPECT_EQ(OSAScript::cleanedError(raw), cleaned) << what;
}

} // namespace
} // namespace mervo
