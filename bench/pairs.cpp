/// Takes samples of several measures, one of each in every round, so that what else the machine does meets all alike.
///
///     bench-pairs ROUNDS NAME KIND WORD... [: NAME KIND WORD...]...
///
///     spawn COMMAND...          a whole process
///     fresh FOLDER COMMAND...   the same, without a folder that is removed before (outside of the clock)
///     after PREPARE COMMAND...  the same, with a command for the shell that is run before (outside of the clock)
///     greet COMMAND...          a server's start, until "initialize" is answered
///     serve PART REQUEST COMMAND...
///                               one answer of a running server, which must hold PART; "@" is a number that grows
///     insert FILE               one row of an audit trail, committed
///     walk FOLDER               the first 4 KiB of every file below a folder
///     stamps FOLDER             a stat of every file below a folder, one after the other
///     rename LIST               a file's pairs of lines, from and to: each renamed (and back again outside of the
///     clock)
///
/// Two rounds more than asked for are done first and left out. Prints one JSON object with all samples in ns.
#include "bench/Measure.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace mervo::bench {

std::unique_ptr<Measure> makeMeasure(const Words& words)
{
    static const std::map<std::string, std::unique_ptr<Measure> (*)(const Words&)> kinds{{"spawn", makeSpawn},
        {"fresh", makeFresh}, {"after", makeAfter}, {"greet", makeGreet}, {"serve", makeServe}, {"insert", makeInsert},
        {"walk", makeWalk}, {"stamps", makeStamps}, {"rename", makeRename}};
    const auto kind = kinds.find(words.at(0));
    if (kind == kinds.end())
        throw std::runtime_error(words[0] + " is no kind of measure");
    return kind->second(Words(words.begin() + 1, words.end()));
}

namespace {

struct Series {
    std::string name;
    std::unique_ptr<Measure> measure;
    std::vector<std::int64_t> wall, cpu;
};

std::vector<Series> readCommandLine(const Words& words)
{
    std::vector<Series> all;
    for (auto from = words.begin(); from != words.end();) {
        const auto to = std::find(from, words.end(), ":");
        if (to - from < 3)
            throw std::runtime_error("a measure is a name, a kind and its words");
        all.push_back({*from, makeMeasure(Words(from + 1, to)), {}, {}});
        from = to == words.end() ? to : to + 1;
    }
    return all;
}

constexpr int kWarmUp = 2;

nlohmann::json measure(int rounds, std::vector<Series> all)
{
    for (int round = -kWarmUp; round < rounds; ++round) {
        for (Series& series : all) {
            const Sample sample = series.measure->sample();
            if (round < 0)
                continue;
            series.wall.push_back(sample.wall);
            series.cpu.push_back(sample.cpu);
        }
    }
    nlohmann::json result;
    for (Series& series : all)
        result[series.name] = {{"wall", series.wall}, {"cpu", series.cpu}, {"notes", series.measure->notes()}};
    return result;
}

} // namespace
} // namespace mervo::bench

int main(int count, char** words)
{
    std::signal(SIGPIPE, SIG_IGN);
    try {
        if (count < 3)
            throw std::runtime_error("usage: bench-pairs ROUNDS NAME KIND WORD... [: NAME KIND WORD...]...");
        auto all = mervo::bench::readCommandLine(mervo::bench::Words(words + 2, words + count));
        std::puts(mervo::bench::measure(std::stoi(words[1]), std::move(all)).dump().c_str());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-pairs: %s\n", error.what());
        return 1;
    }
}
