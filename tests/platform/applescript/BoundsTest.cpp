#include "platform/applescript/HardStop.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/ScriptError.h"
#include "tests/platform/applescript/ToyPost.h"
#include "tests/support/Growth.h"

#include <gtest/gtest.h>

namespace {

using namespace mervo::test;

TEST(Bounds, deepSourcesAreSyntaxErrors)
{
    constexpr int kDeep = 100000;
    const std::string tooDeep = "error -2741: The script is nested too deeply here.";
    for (const char* opening :
        {"(", "{", "- ", "not ", "(a of ", "{a:", "item (", "h(", "2 ^ ", "my h(", "a of ", "{{a:"})
        EXPECT_EQ(runAlone("return " + repeated(kDeep, opening) + "1"), tooDeep) << opening;
    for (const char* opening : {"tell me\n", "repeat\n", "if true then\n", "if true then if true then ", "try\n",
             "tell me to tell it to ", "considering case\n"})
        EXPECT_EQ(runAlone(repeated(kDeep, opening)), tooDeep) << opening;
    for (const char* link : {" + 1", "'s a", " as text", " and true"})
        EXPECT_EQ(runAlone("return a" + repeated(kDeep, link)), tooDeep) << link;
    EXPECT_EQ(runAlone("(*" + repeated(kDeep, "(*")), "error -2741: Expected “*)” but found end of script.");
    EXPECT_EQ(runAlone("return length of (" + repeated(kDeep, "\"a\" & ") + "\"\")"), "100000");
    EXPECT_EQ(runAlone(repeated(5000, "if false then\n1\nelse if true then\n2\nend if\n")), "2");
    EXPECT_EQ(runAlone("return " + repeated(100, "(") + "1" + repeated(100, ")")), "1");
}

TEST(Bounds, recursionIsAnError)
{
    EXPECT_EQ(runAlone("on f()\nf()\nend f\nf()"), "error -2706: Stack overflow.");
    EXPECT_EQ(runAlone("on f()\nf()\nend f\ntry\nf()\non error number n\nreturn n\nend try"), "-2706");
    EXPECT_EQ(runAlone("on f(n)\nif n = 0 then return 0\nreturn 1 + f(n - 1)\nend f\nreturn f(400)"), "400");
}

TEST(Bounds, aListThatHoldsItselfIsAnErrorWhereItIsWalked)
{
    const std::string loop = "set L to {1}\nset end of L to L\nset M to {1}\nset end of M to M\n";
    const std::string overflow = "error -2706: Stack overflow.";
    for (const char* use : {"return L", "return L as text", "copy L to c", "return L = M", "return L contains {L}"})
        EXPECT_EQ(runAlone(loop + use), overflow) << use;
    EXPECT_EQ(runAlone(loop + "return count of L"), "2");
    EXPECT_EQ(runAlone("set r to {a:1}\nset a of r to r\nreturn r"), overflow);
    // An error that quotes it is cut, not endless.
    EXPECT_TRUE(runAlone(loop + "return item 3 of L").starts_with("error -1728: Can’t get item 3 of {1, {1, {"));
}

TEST(Bounds, deepValuesAreFreed)
{
    EXPECT_EQ(runAlone("set L to {}\nrepeat 300000 times\nset L to {L}\nend repeat\nset L to 1\nreturn L"), "1");
    EXPECT_EQ(runAlone("set r to {a:1}\nrepeat 300000 times\nset r to {a:r}\nend repeat\nreturn count of r"), "1");
}

TEST(Bounds, memory)
{
    constexpr std::size_t kBytes = 8 << 20;
    const std::string full = "error -108: Out of memory: the script’s values are larger than is allowed.";
    for (const char* script : {"set s to \"x\"\nrepeat\nset s to s & s\nend repeat",
             "set s to \"é\"\nrepeat\nset s to s & \"é\" & s\nend repeat",
             "set L to {}\nrepeat\nset end of L to 1\nend repeat", "set L to {1}\nrepeat\nset L to L & L\nend repeat",
             "set L to {}\nrepeat\nset L to {L, {}}\nend repeat",
             "set L to {}\nrepeat\nset end of L to current date\nend repeat",
             "set d to \"0123456789\"\nrepeat 8 times\nset d to d & d & d\nend repeat\nset AppleScript's text item "
             "delimiters to d\nset L to words of d\n"
             "repeat\nset L to L & L & (L as text)\nend repeat"})
        EXPECT_EQ(runAlone(script, 0, kBytes), full) << script;
    // What was used is free again: also for the next script.
    EXPECT_EQ(runAlone("set n to 0\nrepeat 200 times\nset s to \"x\"\nrepeat 20 times\nset s to s & s\nend repeat\nset "
                       "n to n + 1\nend repeat\nreturn n",
                  0, kBytes),
        "200");
    EXPECT_EQ(runAlone("set s to \"x\"\ntry\nrepeat\nset s to s & s\nend repeat\non error number n\nreturn n\nend try",
                  0, kBytes),
        "-108");
}

TEST(Bounds, steps)
{
    const std::string tooMany = "error -1712: The script took too many steps.";
    EXPECT_EQ(runAlone("repeat\nend repeat", 10000), tooMany);
    EXPECT_EQ(runAlone("repeat\ntry\nrepeat\nend repeat\nend try\nend repeat", 10000), tooMany);
    // Small to write, large to walk.
    const std::string wide = "set L to {}\nrepeat 60 times\nset L to {L, L}\nend repeat\n";
    EXPECT_EQ(runAlone(wide + "return L", 10000), tooMany);
    EXPECT_EQ(runAlone(wide + "copy L to M", 10000), tooMany);
    EXPECT_EQ(runAlone(wide + "return L as text", 10000), tooMany);
}

TEST(Bounds, findingIsLinear)
{
    const std::string haystack = "set t to \"aaaaaaaaaa\"\nrepeat 20 times\nset t to t & t\nend repeat\n"
                                 "set p to (text 1 thru 2000000 of t) & \"b\"\n";
    EXPECT_EQ(runAlone(haystack + "return t contains p"), "false");
    EXPECT_EQ(runAlone(haystack + "considering case\nreturn offset of p in t\nend considering"), "0");
    EXPECT_EQ(runAlone(haystack + "return (\"é\" & t) contains (\"É\" & p)"), "false");
}

TEST(Bounds, processorTime)
{
    using namespace mervo::applescript;
    const Limits::Scope limits(0, Limits::kDefaultBytes, std::chrono::milliseconds(100));
    try {
        while (true)
            Limits::step();
    } catch (const ScriptError& error) {
        EXPECT_EQ(error.message, "The script was stopped after 1 s of processor time.");
    }
    EXPECT_THROW(Limits::step(), ScriptError) << "a try around the rest does not help";
}

TEST(Bounds, processorTimeCountsWithinFiltersAndLongComparisons)
{
    using Clock = std::chrono::steady_clock;
    ToyWorld world = ToyWorld::large(4000);
    for (ToyLetter& letter : world.accounts[0].boxes[0].letters)
        letter.subject = repeated(2000, "\U0001F600 e\u0301 ");
    const std::string stopped = "error -1712: The script was stopped after 1 s of processor time.";
    const std::string letters = "tell application \"Post\" to return count of (letters of first box whose subject ";
    for (const std::string& script :
        std::initializer_list<std::string>{letters + "contains \"x\")", letters + "ends with \"x\")",
            letters + "is greater than \"x\")", "considering case\n" + letters + "contains \"x\")\nend considering",
            "set t to \"ab \"\nrepeat 20 times\nset t to t & t\nend repeat\n"
            "repeat 255 times\nset n to (t contains \"c\") or (count of words of t) = 1\nset t to t & \"x\"\nend "
            "repeat"}) {
        const auto start = Clock::now();
        EXPECT_EQ(runOver(world, script, {}, std::chrono::milliseconds(50)), stopped) << script;
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(5)) << script;
    }
}

TEST(Bounds, whatLooksAtNoBoundEndsTheProcess)
{
    const auto work = [] {
        const mervo::applescript::HardStop hardStop(std::chrono::milliseconds(50));
        for (volatile int turns = 0;;)
            static_cast<void>(turns);
    };
    EXPECT_EXIT(work(), testing::ExitedWithCode(1), "^execution error: The script was ended.* \\(-1712\\)");
}

/// What the script does with a text `t` of so many combining marks of two kinds.
TEST(Bounds, longRunsOfMarksTakeLinearTime)
{
    for (const std::string use : {"return t contains \"z\"", "return t < (t & \"z\")", "return t ends with (\"x\" & t)",
             "considering case\nreturn t contains \"z\"\nend considering",
             "ignoring diacriticals\nreturn t = \"z\"\nend ignoring",
             "ignoring white space\nreturn offset of t in (\" \" & t & \"q\" & t)\nend ignoring",
             "considering case\nreturn offset of m in (t & \"q\")\nend considering", "return count of characters of t",
             "set n to 0\nrepeat with i from 1 to 16\nset n to n + (count of (character i of (t & "
             "\"0123456789abcdef\")))\nend repeat"}) {
        const auto work = [&](std::size_t pairs) {
            const std::string marks = repeated(pairs, "\u0300\u0323");
            const std::string script = "set m to \"" + marks + "\"\nset t to \"q\" & m\n";
            EXPECT_EQ(runAlone(script + use).find("error"), std::string::npos) << use;
        };
        EXPECT_LT(growth(3000, work), kLinear) << use;
    }
}

TEST(Bounds, numbers)
{
    EXPECT_EQ(
        runAlone("return {536870911, 536870911 + 1, -536870911 - 1, 536870911 * 536870911, 99999999999999999999}"),
        "536870911, 5.36870912E+8, -5.36870912E+8, 2.88230375078E+17, 1.0E+20");
    EXPECT_EQ(runAlone("return {2 ^ 10000, -(2 ^ 10000), 1.0E+300 div 1.0E-10}"), "INF, -INF, INF");
    EXPECT_EQ(runAlone("return 1.0E+300 as integer"), "error -1700: Can’t make 1.0E+300 into type integer.");
    EXPECT_EQ(runAlone("return (current date) + 1.0E+300"), "error -1700: Can’t make 1.0E+300 into type integer.");
    EXPECT_EQ(
        runAlone(
            "set t to current date\nset year of t to 536870911\nset month of t to 536870911\nreturn (year of t) > 0"),
        "true");
    EXPECT_EQ(runAlone("return item 536870911 of {1}"), "error -1728: Can’t get item 536870911 of {1}.");
    EXPECT_EQ(runAlone("return 1e99999"), "error -2741: Expected a number that is not too large but found number.");
}

TEST(Bounds, bytesThatAreNoText)
{
    EXPECT_EQ(runAlone("return length of \"a\xFF\xC3(\""), "4");
    EXPECT_EQ(
        runAlone("return {\"\xFF\" = \"\xFF\", \"a\xFF\" contains \"\xFF\", \"\xC3\" < \"\xC4\"}"), "true, true, true");
    EXPECT_EQ(runAlone(std::string("return length of \"a\0b\"", 22)), "3");
    EXPECT_EQ(
        runAlone(std::string("set x to 1\0", 11)), std::string("error -2741: Expected expression but found “\0”.", 51));
    EXPECT_EQ(runAlone("ignoring diacriticals and white space\nreturn \"\xFF é\" = \"\xFF"
                       "e\"\nend ignoring")
                  .substr(0, 5),
        "false");
}

} // namespace
