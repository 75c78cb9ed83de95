#include "tests/platform/applescript/ToyPost.h"
#include "tests/support/Files.h"

#include <chrono>
#include <cstdio>
#include <functional>
#include <numeric>

/// Times of the interpreter, over a small application in memory: the whole criteria script over 20,000 and 100,000
/// letters, and loops of one kind of operation each. `floor` is a C++ loop over as many texts, in the same run.
namespace {

using namespace mervo::test;

double milliseconds(const std::function<void()>& work)
{
    double best = 1e9;
    for (int i = 0; i < 5; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best =
            std::min(best, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

void criteria(std::size_t letters)
{
    ToyWorld world = ToyWorld::large(letters);
    const std::string script =
        readFile(std::string(MERVO_SOURCE_DIR) + "/tests/platform/applescript/criteria.applescript");
    std::string answer;
    const double time = milliseconds([&] {
        answer = runOver(world, script,
            {"Bulk", "INBOX", "person 42", "", "2030-01-01", "2000-01-01", "", "500", "", "number 99", "", "0"});
    });
    std::size_t found = 0;
    const double floor = milliseconds([&] {
        for (const ToyLetter& letter : world.accounts[0].boxes[0].letters) {
            found += letter.sender.find("Person 42") != std::string::npos
                && letter.subject.find("number 99") != std::string::npos;
        }
    });
    std::printf("criteria over %zu letters: %.1f ms (floor %.2f ms, %zu bytes of answer)\n", letters, time, floor,
        answer.size() + (found > 0 ? 0 : 1));
}

void loop(const char* name, int rounds, const std::string& body, const std::string& before = "")
{
    const std::string script =
        before + "\nrepeat with i from 1 to " + std::to_string(rounds) + "\n" + body + "\nend repeat\nreturn 0";
    std::string answer;
    const double time = milliseconds([&] { answer = runAlone(script); });
    std::printf(
        "%-44s %7.1f ms  %6.0f ns each%s\n", name, time, time * 1e6 / rounds, answer == "0" ? "" : answer.c_str());
}

} // namespace

int main()
{
    criteria(20000);
    criteria(100000);
    const std::string list =
        "set L to {}\nrepeat with k from 1 to 100000\nset end of L to \"Person \" & k & \" <p@example.org>\"\n"
        "end repeat\nset hits to 0\nset q to \"PERSON 42\"";
    loop("nothing", 100000, "");
    loop("x + 1", 100000, "set x to x + 1", "set x to 0");
    loop("set end of L", 100000, "set end of L to i", "set L to {}");
    loop("item i, contains, is, < and count", 100000,
        "if (item i of L) contains q then set hits to hits + 1\nif (item i of L) is \"\" then set hits to 0\n"
        "if (item i of N) < 0 then set hits to 0",
        list + "\nset N to {}\nrepeat with k from 1 to 100000\nset end of N to k\nend repeat");
    loop("append to a text", 100000, "set s to s & \"a line of text\" & linefeed", "set s to \"\"");
    loop("character i of a text", 100000, "set c to character i of s",
        "set s to \"ab\"\nrepeat 16 times\nset s to s & s\nend repeat");
    loop("character i of a text beyond ASCII", 100000, "set c to character i of s",
        "set s to \"é→\"\nrepeat 16 times\nset s to s & s\nend repeat");
    loop("call of a handler", 100000, "h(i)", "on h(n)\nreturn n\nend h");
    loop("repeat with v in L", 10, "repeat with v in L\nif contents of v is \"\" then set hits to 1\nend repeat", list);
    return 0;
}
