#include "tests/platform/applescript/ToyPost.h"

#include <ctime>
#include <gtest/gtest.h>
#include <span>

namespace {

using namespace mervo::test;

struct Case {
    const char* script;
    const char* expected;
};

void expectAll(std::span<const Case> cases)
{
    for (const auto& [script, expected] : cases)
        EXPECT_EQ(runAlone(script), expected) << script;
}

TEST(Language, syntaxErrors)
{
    const Case cases[] = {
        {"set x to", "error -2741: Expected expression but found end of script."},
        {"set x to\nreturn x", "error -2741: Expected expression but found end of line."},
        {"if true then\nset x to 1", "error -2741: Expected “end” but found end of script."},
        {"repeat 2 times\nend if", "error -2741: Expected “repeat” but found “if”."},
        {"on f()\nend g", "error -2741: Expected “f” but found identifier."},
        {"if true then\non f()\nend f\nend if", "error -2741: Expected “end” but found “on”."},
        {"set x to 5 6", "error -2740: A number can’t go after this number."},
        {"display dialog \"hi\"", "error -2740: A identifier can’t go after this identifier."},
        {"return a b", "error -2740: A identifier can’t go after this identifier."},
        {"return 1 = 2 = 3", "error -2741: Expected end of line but found “=”."},
        {"set 5 to x", "error -2741: Expected a variable or a reference but found number."},
        {"return (1", "error -2741: Expected “)” but found end of script."},
        {"return {1, 2", "error -2741: Expected “}” but found end of script."},
        {"return {1, a:2}", "error -2741: Expected “,” or “}” but found “:”."},
        {"return {a:1, 2}", "error -2741: Expected the name of a property and “:” but found number."},
        {"return 1 as planet", "error -2741: Expected class name but found identifier."},
        {"return \"a\\q\"", "error -2741: Expected “\\n”, “\\r”, “\\t”, “\\\"” or “\\\\” but found “\\q”."},
        {"exit repeat", "error -2755: “exit repeat” stands outside of any “repeat”."},
        {"considering colour\nend considering",
            "error -2741: Expected case, diacriticals, white space, hyphens, punctuation, numeric strings or "
            "application "
            "responses but found identifier."},
        {"set x to 1\non run\nend run",
            "error -2741: Expected one run handler: “on run” and statements outside of it exclude each other, but "
            "found “on”."},
        {"return ¬ 5", "error -2741: Expected expression but found “¬”."},
        {"make new thing",
            "error -2741: Expected a command of the language or a “tell application” around it but found identifier."},
        {"path to desktop", "error -2741: Expected “home folder” but found identifier."},
        {"set x to «event aevtoapp»", "error -2741: Expected expression but found “«event aevtoapp»”."},
        {"error to e = error to c", "error -2741: Expected expression but found “error”."},
        {"error \"a\" to a to b", "error -2741: A part of “error” stands here twice."},
        {"try\non error number a number b\nend try", "error -2741: A part of “on error” stands here twice."},
        {"using terms from application id x\nend using terms from",
            "error -2741: Expected “application” and its name but found identifier."},
        {"using terms from application x\nend using terms from",
            "error -2741: Expected “application” and its name but found identifier."},
        {"return @", "error -2741: Expected expression but found “@”."},
        {"script foo\nend script", "error -2741: Script objects are not known to this host."},
        {"transaction\nend transaction", "error -2741: Transactions are not known to this host."},
    };
    expectAll(cases);
}

TEST(Language, valuesAndOperators)
{
    const Case cases[] = {
        {"return {-7 mod 3, 7 mod -3, -7.5 div 2, 7 div 0.5, \"7\" div 2}", "-1, 1, -3, 14, 3"},
        {"return {5 / 2 * 2, 2 ^ -1, - 3, +4, - -5}", "5.0, 0.5, -3, 4, 5"},
        {"return 5 div 0", "error -2701: Can’t divide 5 by zero."},
        {"return 5 / 0", "error -2701: Can’t divide 5.0 by zero."},
        {"return {0.0001, 0.00012, 0.0011, 123456789.123, 9999.99999999999, -0.5, 100.0}",
            "1.0E-4, 1.2E-4, 0.0011, 1.23456789123E+8, 1.0E+4, -0.5, 100.0"},
        {"return {2.5 as integer, 3.5 as integer, -2.6 as integer, \"3.7\" as integer, \" 12 \" as number, \"1.0\" as "
         "integer}",
            "2, 4, -3, 4, 12, 1"},
        {"return \"\" as integer", "error -1700: Can’t make \"\" into type integer."},
        {"return \"0x10\" as number", "error -1700: Can’t make \"0x10\" into type number."},
        {"return \"inf\" as real", "error -1700: Can’t make \"inf\" into type real."},
        {"return missing value as real", "error -1700: Can’t make missing value into type real."},
        {"return {missing value as list, true as list, \"TRUE\" as boolean, {{7}} as integer}",
            "missing value, true, true, 7"},
        {"return 2 as boolean", "error -1700: Can’t make 2 into type boolean."},
        {"return {a:1} as text", "error -1700: Can’t make {a:1} into type text."},
        {"return {1, {2, \"x\"}} as text", "12x"},
        {"return {March as text, March as integer, text as text, yes as text}", "March, 3, text, yes"},
        {"return {3 > 2, \"10\" < \"9\", 10 < \"9\", \"a\" comes before \"B\", \"ab\" > \"a\", \"_\" < \"0\"}",
            "true, true, false, true, true, true"},
        {"return true < false", "error -1700: Can’t make true into type number."},
        {"return {{} contains {}, {1} contains {}, {{1}} contains 1, {{1}} contains {{1}}, {1, 2} starts with 1, {1, "
         "2} ends with {1, 2}}",
            "true, true, false, true, true, true"},
        {"return {{a:1, b:2} contains {b:2}, {a:1} contains {a:2}, 5 contains 5}", "true, false, true"},
        {"return {1} & {a:2}", "1, a:2"},
        {"return {a:1} & {a:2, b:3}", "a:1, b:3"},
        {"return {count of (missing value & 1), (1 & 2 & 3) & 4, \"\" & 1 & {2, 3}}", "2, 1, 2, 3, 4, 123"},
        {"return 1 & 2 & 3 = {1, 2, 3}", "true"},
        {"set L to {1}\nset M to L & 2\nset end of M to 3\nreturn L", "1"},
        {"return {not true and false, not (true and false), true or false and false}", "false, true, true"},
        {"return {1 is equal to 1, 1 is not equal to 2, 2 is not less than 2, 2 does not come before 1, \"b\" doesn't "
         "start with \"a\"}",
            "true, true, true, true, true"},
        {"return {3 isn't 4, 3 isn't in {4}, \"a\" isn't contained by \"abc\"}", "true, true, false"},
        {"return {class of pi, class of text, class of missing value, class of yes, class of me}",
            "real, class, class, constant, script"},
        {"return {class of 1 is integer, class of \"\" is string, class of {} is list}", "true, true, true"},
    };
    expectAll(cases);
}

TEST(Language, textRules)
{
    const Case cases[] = {
        {"return {\"É\" = \"é\", \"e\xCC\x81\" = \"é\", \"straße\" = \"STRASSE\", \"Ω\" = \"ω\"}",
            "true, true, true, true"},
        {"return {\"e\" < \"é\", \"é\" < \"f\", \"zebra\" > \"élan\"}", "true, true, true"},
        {"considering case\nreturn {\"a\" < \"B\", \"a\" < \"A\", \"A\" < \"a\", \"a\" = \"a\"}\nend considering",
            "true, true, false, true"},
        {"ignoring punctuation\nreturn {\"it's\" = \"its\", \"a.b\" contains \"ab\"}\nend ignoring", "true, true"},
        {"considering case but ignoring diacriticals, hyphens\nreturn {\"É-t\" = \"Et\", \"é\" = \"E\"}\nend "
         "considering",
            "true, false"},
        {"try\nconsidering case\nerror \"x\"\nend considering\nend try\nreturn \"a\" = \"A\"", "true"},
        {"on f()\nconsidering case\nreturn \"a\" = \"A\"\nend considering\nend f\nreturn {f(), \"a\" = \"A\"}",
            "false, true"},
        {"considering numeric strings\nreturn {\"a 2\" < \"a 10\", \"v007\" = \"v7\"}\nend considering", "true, true"},
        {"return {offset of \"É\" in \"café au lait\", offset of \"b\" in \"→🔗b\", offset of \"\" in \"a\"}",
            "4, 3, 0"},
        {"considering case\nreturn offset of \"A\" in \"banAna\"\nend considering", "4"},
        {"ignoring white space\nreturn offset of \"bc\" in \"a b c\"\nend ignoring", "3"},
        {"set text item delimiters to \"X\"\nconsidering case\nreturn count of text items of \"axbXc\"\nend "
         "considering",
            "2"},
        {"set text item delimiters to \"X\"\nreturn count of text items of \"axbXc\"", "3"},
        {"set text item delimiters to {\"ab\", \"abc\"}\nreturn text items of \"1abc2ab3\"", "1, 2, 3"},
        {"set old to AppleScript's text item delimiters\nset AppleScript's text item delimiters to \"--\"\nset s to "
         "{1, {2, 3}} as text\n"
         "set AppleScript's text item delimiters to old\nreturn {s, {1, 2} as text}",
            "1--2--3, 12"},
        {"set text item delimiters to \", \"\nreturn \"n: \" & {1, 2}", "n: 1, 2"},
        {"ignoring application responses\nreturn 1\nend ignoring", "1"},
    };
    expectAll(cases);
}

TEST(Language, textElements)
{
    const Case cases[] = {
        {"set s to \"naïve→🔗👩‍👩‍👧x\"\n"
         "return {count of s, character 7 of s, character 8 of s, character -1 of s, text 3 thru 6 of s}",
            "9, 🔗, 👩‍👩‍👧, x, ïve→"},
        {"return {word 1 of \"it's 3.14, (x-y) a@b.org\", words of \"it's 3.14, (x-y) a@b.org\"}",
            "it's, it's, 3.14, x, y, a, b.org"},
        {"return {text from word 2 to word 3 of \"the quick  brown fox\", text from character 2 to word 2 of \"ab "
         "cd\"}",
            "quick  brown, b cd"},
        {"return paragraphs of (\"a\" & return & linefeed & \"b\" & linefeed & linefeed & \"c\")", "a, b, , c"},
        {"return {count of paragraphs of \"\", count of words of \"\", count of text items of \"\", length of \"\"}",
            "0, 0, 0, 0"},
        {"return {characters 4 thru 2 of \"abcde\", text 2 thru end of \"abc\", text -2 thru -1 of \"abc\"}",
            "b, c, d, bc, bc"},
        {"return text (middle word of \"x y z\") thru 7 of \"ab cd ef\"", "cd e"},
        {"return text 1 thru (every word of \"x\") of \"ab\"", "error -1728: Can’t get every word of \"ab\"."},
        {"return text 1 thru 9 of \"abc\"", "error -1728: Can’t get text 1 thru 9 of \"abc\"."},
        {"return text 0 thru 1 of \"abc\"", "error -1728: Can’t get text 0 thru 1 of \"abc\"."},
        {"return {id of \"é\", id of \"ab\", character id 128279, string id {72, 105}, reverse of characters of "
         "\"abc\"}",
            "233, 97, 98, 🔗, Hi, c, b, a"},
        {"return {first character of \"abc\", last word of \"a b\", middle character of \"abc\", 2nd word of \"a b\", "
         "every character of \"ab\"}",
            "a, b, b, b, a, b"},
        {"return some item of {5, 5}", "5"},
        {"set character 1 of \"abc\" to \"x\"", "error -10006: Can’t set character 1 of \"abc\" to \"x\"."},
        {"return quoted form of \"\"", "''"},
        {"return length of (\"a\" & return & linefeed)", "2"},
        {"set out to \"\"\nrepeat with c in \"añb\"\nset out to out & c & \".\"\nend repeat\nreturn out", "a.ñ.b."},
    };
    expectAll(cases);
}

TEST(Language, listsRecordsAndReferences)
{
    const Case cases[] = {
        {"return {items 2 thru -2 of {1, 2, 3, 4}, rest of {1}, every number of {1, \"a\", 2.5}, item 2 of every text "
         "of {1, \"a\", \"b\"}}",
            "2, 3, 1, 2.5, b"},
        {"return item \"a\" of {1}", "error -1728: Can’t get item \"a\" of {1}."},
        {"return every item of {1, 2} whose class is integer", "error -1728: Can’t get every item of {1, 2}."},
        {"return name of {1}", "error -1728: Can’t get name of {1}."},
        {"set {a, {b, c}} to {1, {2, 3}}\nreturn a + b + c", "6"},
        {"set {a, b} to {1}", "error -1728: Can’t get item 2 of {1}."},
        {"set r to {a:{1, 2}}\nset end of a of r to 3\nset item 1 of r's a to 0\nreturn r", "a:0, 2, 3"},
        {"set r to {a:1}\nset b of r to 2", "error -10006: Can’t set b of {a:1} to 2."},
        {"set r to {|odd name|:1, length:7}\nreturn {|odd name| of r, length of r, r's class}", "1, 7, record"},
        {"set x to 1\nset r to a reference to x\nset contents of r to 5\nreturn {x, r + 1}", "5, 6"},
        {"repeat with v in {\"a\"}\nreturn {v is \"a\", (v as text) is \"a\", v & \"\" is \"a\", length of v, class of "
         "v, v contains \"A\", v is in {\"a\"}}\nend repeat",
            "false, true, true, 1, text, true, true"},
        {"repeat with v in {\"a\"}\nreturn v\nend repeat", "a"},
        {"set L to {1, 2}\nrepeat with v in L\nset end of L to 0\nend repeat\nreturn count of L", "4"},
        {"set a to {1, {2}}\ncopy a to b\nset item 1 of item 2 of b to 9\nreturn a", "1, 2"},
        {"return count of {a:1, b:2}", "2"},
        {"return number of items of {4, 5}", "2"},
        {"set x to {}\ntell x to set end to 5\nreturn x", "5"},
        {"tell {1, 2} to return {item 1, count of it, length}", "1, 2, 2"},
    };
    expectAll(cases);
}

TEST(Language, statementsAndScope)
{
    const Case cases[] = {
        {"set n to 0\nrepeat with i from 1.0 to 2 by 0.5\nset n to n + i\nend repeat\nreturn {n, i}", "4.5, 2.0"},
        {"repeat with i from 1 to 3\nset i to 10\nend repeat\nreturn i", "10"},
        {"repeat with i from 1 to 2 by 0\nend repeat", "error -2700: A repeat can’t go on by 0."},
        {"if 1 = 2 then return 1\nif 1 = 1 then return 2 else return 3", "2"},
        {"if false then\nreturn 1\nelse if false then\nreturn 2\nelse\nreturn 3\nend", "3"},
        {"5\nset x to result + 1\nreturn {x, result}", "6, 6"},
        {"on f()\nend f\nset x to f()\nreturn x", "error -2753: The variable x is not defined."},
        {"on f({a, {b}}, c)\nreturn a + b + c\nend f\nreturn f({1, {2}}, 3)", "6"},
        {"on f(a, b)\nend f\nf(\"x\")", "error -1721: {\"x\"} doesn’t match the parameters {a, b} for f."},
        {"on f()\nglobal g\nset g to 3\nend f\nf()\nreturn g", "3"},
        {"property p : {1}\non f()\nset end of p to 2\nset my p to my p & 3\nend f\nf()\nreturn p of me", "1, 2, 3"},
        {"to greet of me\nreturn 1\nend greet", "error -2741: Expected end of line but found “of”."},
        {"to greet()\nreturn 1\nend\nreturn greet() of me", "1"},
        {"global a, b\nset a to 1\non f()\nset a to a + 1\nset b to a\nend f\nf()\nreturn {a, b}", "2, 2"},
        {"on run\nlocal a\nset a to 4\nreturn a\nend run", "4"},
        {"on run {a, b}\nreturn a\nend run", "error -1728: Can’t get item 1 of {}."},
        {"try\nerror \"m\" number 5 from {1} partial result {2} to integer\non error m number n from f partial result "
         "p to t\nreturn {m, n, f, p, t}\nend try",
            "m, 5, 1, 2, integer"},
        {"try\nerror number -128\non error number 5\nreturn 1\nend try", "error -128: User canceled."},
        {"try\nerror number -128\non error number -128\nreturn 1\nend try", "1"},
        {"error", "error -2700: An error has occurred."},
        {"use AppleScript version \"2.4\"\nuse scripting additions\nreturn 1", "1"},
        {"do shell script \"ls\"", "error -1708: «script» doesn’t understand the “do shell script” message."},
        {"return {round 2.4 rounding up, round -2.5, round -2.7 rounding toward zero, round 2.9 rounding down, round "
         "0.5 rounding as taught in school}",
            "3, -2, -2, 2, 1"},
        {"set n to random number from 3 to 3\nreturn {n, (random number) < 1}", "3, true"},
        {"return {POSIX path of (path to home folder) ends with \"/\", name of POSIX file \"/a/b c\", exists POSIX "
         "file \"/nonexistent\"}",
            "true, b c, false"},
        {"return date \"nonsense\"", "error -30720: Invalid date and time date \"nonsense\"."},
        {"return {year of date \"2024-02-29\", time of date \"2024-02-29 01:02:03\", hours of date \"Monday, July 1, "
         "2024 at 12:30:00 PM\"}",
            "2024, 3723, 12"},
        {"set t to date \"2024-03-31\"\nset month of t to February\nreturn {short date string of t, date string of t, "
         "time string of t}",
            "3/2/24, Saturday, March 2, 2024, 12:00:00 AM"},
        {"set a to date \"2024-01-01\"\nset b to date \"2024-01-02\"\nreturn {b - a, a < b, b ≥ a, a + 1 * days = b, a "
         "is in {a}}",
            "86400, true, true, true, true"},
        {"return (date \"2024-01-01\") * 2",
            "error -1700: Can’t make date \"Monday, January 1, 2024 at 12:00:00 AM\" into type number."},
    };
    expectAll(cases);
}

TEST(Language, localTimeHasNoZone)
{
    ::setenv("TZ", "Europe/Paris", 1);
    ::tzset();
    using mervo::applescript::Date;
    // The clocks go forward at 01:00 UTC on 2024-03-31, back on 2024-10-27.
    EXPECT_EQ(Date::fromUnix(1711846799), Date::fromParts(2024, 3, 31, 3600 + 3599));
    EXPECT_EQ(Date::fromUnix(1711846800), Date::fromParts(2024, 3, 31, 3 * 3600));
    EXPECT_EQ(Date::fromParts(2024, 3, 31, 3 * 3600).toUnix(), 1711846800);
    EXPECT_EQ(Date::fromUnix(1729990800), Date::fromParts(2024, 10, 27, 2 * 3600));
    for (std::int64_t moment = 1700000000; moment < 1740000000; moment += 99991) {
        if (moment / 86400 != 1729990800 / 86400) { // one hour of that day is there twice
            EXPECT_EQ(Date::fromUnix(moment).toUnix(), moment);
        }
    }
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    EXPECT_EQ(Date::fromParts(1900, 2, 29), Date::fromParts(1900, 3, 1));
    EXPECT_EQ(mervo::applescript::DateParts(Date::fromParts(-4, 2, 29)).day, 29);
}

} // namespace
