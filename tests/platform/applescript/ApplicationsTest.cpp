#include "tests/platform/applescript/ToyPost.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace {

using namespace mervo::test;

struct Case {
    const char* name;
    const char* script; // inside `tell application "Post"`
    const char* expected;
};

constexpr Case kReading[] = {
    {"an element by name, of an element by name", "get name of box \"inbox\" of account \"HOME\"", "INBOX"},
    {"by id, ordinal, from the end, named",
        "{name of account id \"A2\", name of 1st account, name of last account, name of account -2, "
        "name of account named \"work\"}",
        "Work, Home, Work, Home, Work"},
    {"a synonym of the class", "name of every service", "Home, Work"},
    {"a bulk property nests", "get name of every box of every account", "INBOX, Old, INBOX"},
    {"an object shows as a reference", "letter 1 of box 1 of account 1", "letter id 7 of box INBOX of account id A1"},
    {"missing where an element has none", "letter note of letters of box 1 of account 1",
        "missing value, kept, missing value"},
    {"a range", "subject of letters 2 thru 3 of box 1 of account 1", "Lunch, Re: weekly report"},
    {"a property that is an object", "name of first box", "INBOX"},
    {"a term of many words before a shorter one", "get letter size of letter 1 of first box", "2000"},
    {"the language's terms on values", "text 1 thru 6 of (get subject of letter 1 of first box)", "Weekly"},
    {"a filter", "subject of (every letter of first box whose read status is true)", "Lunch, Re: weekly report"},
    {"a filter on two things, text rules",
        "id of (letters of first box whose sender contains \"ANN\" and letter size > 1600)", "7"},
    {"whose after a chain filters its head",
        "subject of every letter of box \"INBOX\" of account \"Home\" whose id is 8", "Lunch"},
    {"a filter sees outer values",
        "set least to 1000\nget count of (every letter of first box whose letter size > least)", "2"},
    {"a filter goes into elements", "id of (every letter of first box whose (count of to recipients) > 1)", "8"},
    {"a filter with it", "id of (every letter of first box whose (subject of it) starts with \"re\")", "9"},
    {"an empty filter", "get every letter of first box whose id is 99", ""},
    {"a singular filter", "subject of first letter of first box whose read status is true", "Lunch"},
    {"the last of a filter", "subject of last letter of first box whose read status is true", "Re: weekly report"},
    {"a filter across containers", "count of (every box of every account whose name is \"INBOX\")", "2"},
    {"exists never fails",
        "{exists account \"Home\", exists account \"Nope\", exists box \"X\" of account \"Nope\", (exists letter 9 of "
        "first box), "
        "exists (letters of first box whose id is 8)}",
        "true, false, false, false, true"},
    {"count does not list", "count letters of box 1 of account 1", "3"},
    {"number of", "number of accounts", "2"},
    {"tell an object", "tell box 1 of account 1\nget {name, count of letters}\nend tell", "INBOX, 3"},
    {"its and it", "tell account 2 to get its name & (name of it)", "WorkWork"},
    {"a snapshot outlives a deletion",
        "set msgs to every letter of first box\ndelete item 1 of msgs\nget subject of item 2 of msgs", "Lunch"},
    {"loops see through",
        "set out to \"\"\nrepeat with a in accounts\nset out to out & name of a & \" \"\nend repeat\nout",
        "Home Work "},
    {"loops over a fetched list",
        "set out to {}\nrepeat with b in (every box of account 1)\nset end of out to name of b\nend repeat\nout",
        "INBOX, Old"},
    {"objects are equal by identity",
        "{account 1 = account \"Home\", account 1 = account 2, account 1 is in (get accounts)}", "true, false, true"},
    {"class of an object", "{class of account 1, class of account 1 is account}", "account, true"},
    {"properties", "name of (get properties of account 1)", "Home"},
    {"contents of an object is the object", "name of contents of account 2", "Work"},
    {"a reference is looked up anew",
        "set r to a reference to subject of letter 1 of first box\nset subject of letter 1 of first box to "
        "\"new\"\ncontents of r",
        "new"},
    {"application properties", "{name, running, version}", "Post, true, 1.0"},
    {"enumerators", "{iLetter, postcard is iLetter}", "iLetter, false"},
    {"the length of all", "length of (every letter of first box)", "3"},
};

TEST(Applications, references)
{
    for (const auto& [name, script, expected] : kReading) {
        ToyWorld world = ToyWorld::sample();
        EXPECT_EQ(runOver(world, std::string("tell application \"Post\"\n") + script + "\nend tell"), expected) << name;
    }
}

struct Failure {
    const char* script; // inside `tell application "Post"`
    int number;
    const char* message; // behind the application's name
};

constexpr Failure kFailing[] = {
    {"get account \"Nope\"", -1728, "Can’t get account \"Nope\"."}, // no such name
    {"get box \"X\" of account \"Home\"", -1728, "Can’t get box \"X\" of account \"Home\"."}, // a chain as written
    {"get letter 9 of first box", -1719,
        "Can’t get letter 9 of box \"INBOX\" of account id \"A1\". Invalid index."}, // an index beyond
    {"first account whose name is \"Nope\"", -1719,
        "Can’t get account 1 whose name = \"Nope\". Invalid index."}, // a singular filter without match
    {"set m to letter 1 of first box\ndelete m\nget subject of m", -1728,
        "Can’t get subject of letter id 7 of box \"INBOX\" of account id \"A1\"."}, // a stale reference
    {"set sender of letter 1 of first box to \"x\"", -10006,
        "Can’t set sender of letter 1 of box \"INBOX\" of account id \"A1\" to \"x\"."}, // read only
    {"set broken part to 1", -1723, "Can’t get broken part. Access not allowed."}, // refused by the model
    {"get broken part", -10000, "AppleEvent handler failed."}, // a model that fails in its own way
    {"h()", -1708, "Can’t continue h."}, // a handler is not the application's
    {"duplicate letter 1 of first box", -1708, "Can’t continue duplicate."}, // a command without meaning
    {"set read status of letter 1 of first box to \"maybe\"", -1700,
        "Can’t make \"maybe\" into type boolean."}, // a wrong value
    {"get address of account 1", -1728, "Can’t get address of account 1."}, // a property that the class has not
};

TEST(Applications, failuresNameTheApplicationAndTheReference)
{
    for (const auto& [script, number, message] : kFailing) {
        ToyWorld world = ToyWorld::sample();
        EXPECT_EQ(runOver(world, std::string("on h()\nend h\ntell application \"Post\"\n") + script + "\nend tell"),
            "error " + std::to_string(number) + ": Post got an error: " + message)
            << script;
    }
}

TEST(Applications, commandsGetTheirArguments)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(runOver(world, R"(tell application "Post"
        send letter 1 of first box loudly false reply to all true
        send (every letter of first box whose id > 7) with loudly
        tell letter 2 of first box to send without loudly
        set t to "words"
        file away t in box 2 of account 1
    end tell)"),
        "true");
    const std::vector<std::string> expected{"send letter id 7 of box INBOX of account id A1 to all",
        "send letter id 8 of box INBOX of account id A1, letter id 9 of box INBOX of account id A1 loudly",
        "send letter id 8 of box INBOX of account id A1", "file words in box Old of account id A1"};
    EXPECT_EQ(world.commands, expected);
}

TEST(Applications, makesMovesAndDeletes)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(runOver(world, R"(tell application "Post"
        set old to box "Old" of account "Home"
        set a to make new letter at end of letters of old with properties {subject:"one"}
        tell old to make new letter at beginning of letters with properties {subject:"two"}
        set subjects to subject of every letter of old
        move (letters of first box whose read status is true) to old
        delete a
        set read status of every letter of old to true
        return {subjects, count of letters of first box, subject of every letter of old, unread count of old}
    end tell)"),
        "two, one, 1, two, Lunch, Re: weekly report, 0");
}

TEST(Applications, aBulkPropertyIsOneRequest)
{
    ToyWorld world = ToyWorld::sample();
    runOver(world, R"(tell application "Post"
        set mb to first box
        get subject of every letter of mb
        get letter size of (every letter of mb)
        count of (letters of mb whose read status is true and letter size > 10)
    end tell)");
    EXPECT_EQ(world.bulkRequests, 4); // two columns, and two for the filter
    EXPECT_EQ(world.singleRequests, 0);
}

TEST(Applications, aRangeIsOneRequestAndMakesOnlyItsItems)
{
    ToyWorld world = ToyWorld::large(1000);
    EXPECT_EQ(runOver(world, R"(tell application "Post"
        set mb to first box
        set total to 3
        set sizes to letter size of (letters 2 thru total of mb)
        set last_ to subject of letters -2 thru -1 of mb
        return {sizes, last_, count of letters 5 thru 9 of mb, subject of item 2 of (get letters 3 thru 1 of mb)}
    end tell)"),
        "1007, 1014, Subject number 998, Subject number 999, 5, Subject number 1");
    EXPECT_EQ(world.bulkRequests, 2);
    EXPECT_EQ(world.listings, 1);
    EXPECT_EQ(world.madeItems, 2);
}

TEST(Applications, aListThatMakesItsItemsIsAListLikeAnyOther)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(runOver(world, R"(tell application "Post" to set L to letter size of every letter of first box
        set M to L
        set seen to {count of L, item -1 of L, 300 is in L, items 1 thru 2 of L, reverse of L, L = {2000, 300, 1500}, L as text}
        set end of L to 4
        set item 1 of M to 0
        set beginning of M to "b"
        copy L to N
        repeat with v in L
            set contents of v to 1
        end repeat
        return {seen, L, M & rest of N})"),
        "3, 1500, true, 2000, 300, 1500, 300, 2000, true, 20003001500, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 300, 1500, 4");
}

TEST(Applications, aConditionAsksOutsideOnce)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(runOver(world, R"(property calls : 0
        on least(n)
            set calls to calls + 1
            return n
        end least
        on twice(n)
            set calls to calls + 10
            return 2 * n
        end twice
        tell application "Post"
            set a to id of (letters of first box whose letter size > my least(1000) and date received < (current date))
            set b to id of (letters of first box whose my twice(letter size) > 3500)
        end tell
        return {a, b, calls})"),
        "7, 9, 7, 31");
}

TEST(Applications, areMadeAndStartedOnlyWhenAddressed)
{
    ToyWorld world = ToyWorld::sample();
    runOver(world, "return 1");
    EXPECT_EQ(world.made, 0);
    EXPECT_EQ(
        runOver(world, "tell application \"Post\" to set x to 1\nif false then tell application \"Post\" to activate"),
        "1");
    EXPECT_EQ(world.launches, 0);
    EXPECT_EQ(
        runOver(world, "return {application \"post\" is running, running of application id \"com.example.post\"}"),
        "false, false");
    EXPECT_EQ(world.launches, 0);
    EXPECT_EQ(runOver(world, "tell application \"Toy Post\" to count accounts\nreturn running of application \"Post\""),
        "true");
    EXPECT_EQ(world.launches, 1);
    EXPECT_EQ(runOver(world,
                  "tell application \"Post\"\ncount accounts\nquit saving no\nend tell\nreturn application \"Post\" is "
                  "running"),
        "false");
    world.refusesAccess = true;
    EXPECT_EQ(runOver(world, "tell application \"Post\" to count accounts"),
        "error -1743: Not authorized to send Apple events to Post.");
    EXPECT_EQ(runOver(world, "tell application \"Nope\" to activate"), "error -1728: Can’t get application \"Nope\".");
}

TEST(Applications, termsHoldForTheTextOfTheBlockOnly)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(
        runOver(world,
            "on sizeOf(x)\nreturn letter size of x\nend sizeOf\ntell application \"Post\" to my sizeOf(letter 1)"),
        "error -2740: A identifier can’t go after this identifier.");
    EXPECT_EQ(
        runOver(world, "on nameOf(x)\nreturn name of x\nend nameOf\ntell application \"Post\" to my nameOf(account 2)"),
        "Work");
    EXPECT_EQ(runOver(world, "using terms from application \"Post\"\non sizeOf(x)\nend sizeOf\nend using terms from"),
        "error -2741: Expected “end” but found “on”.");
    EXPECT_EQ(runOver(world, "set subject to 5\nset sender to subject + 1\nreturn sender"), "6");
    EXPECT_EQ(
        runOver(world, "set |account| to 3\ntell application \"Post\" to return |account| + (count of accounts)"), "5");
    EXPECT_EQ(runOver(world, "set n to \"Post\"\ntell application n to return name"), "Post");
    EXPECT_EQ(runOver(world, "tell application \"Post\" to make new planet"),
        "error -2741: Expected class name but found identifier.");
}

TEST(Applications, aTimeoutReachesTheCommand)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(runOver(world, "with timeout of 0 seconds\ntell application \"Post\" to count accounts\nend timeout"),
        "error -1712: Post got an error: AppleEvent timed out.");
}

std::string criteria(ToyWorld& world, std::vector<std::string> arguments)
{
    static const std::string script =
        readFile(std::string(MERVO_SOURCE_DIR) + "/tests/platform/applescript/criteria.applescript");
    arguments.resize(12);
    if (arguments.back().empty())
        arguments.back() = "0";
    return runOver(world, script, arguments);
}

TEST(Applications, aWholeScriptSelectsByCriteria)
{
    ToyWorld world = ToyWorld::sample();
    EXPECT_EQ(criteria(world, {"Home", "inbox", "ANN", "", "2024-03-09"}),
        "2024-3-1 || 1500 || ann@example.org || Re: weekly report");
    EXPECT_EQ(criteria(world, {"Home", "INBOX", "", "me@"}),
        "2024-3-9 || 2000 || Ann <ann@example.org> || Weekly Report\n2024-3-5 || 300 || Bob <bob@example.org> || "
        "Lunch");
    EXPECT_EQ(criteria(world, {"Home", "INBOX", "", "", "", "2024-03-05", "", "0.5"}),
        "2024-3-9 || 2000 || Ann <ann@example.org> || Weekly Report");
    EXPECT_EQ(criteria(world, {"Home", "INBOX", "", "", "", "", "", "", "", "", "unread", "1"}),
        "2024-3-9 || 2000 || Ann <ann@example.org> || Weekly Report");
    EXPECT_EQ(criteria(world, {"Home", "Nope"}), "error -2700: box not found: Nope");
    EXPECT_EQ(
        criteria(world, {"Home", "INBOX", "", "", "next week"}), "error -1700: Can’t make \"next\" into type integer.");
}

} // namespace
