#include "tests/platform/applescript/ScriptCases.h"
#include "tests/platform/applescript/ToyPost.h"

#include <gtest/gtest.h>

namespace {

using namespace mervo::test;

TEST(Applications, answer)
{
    for (const auto& [script, expected] : scriptCases("post")) {
        ToyWorld world = ToyWorld::sample();
        EXPECT_EQ(runOver(world, "on h()\nend h\ntell application \"Post\"\n" + script + "\nend tell"), expected)
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

} // namespace
