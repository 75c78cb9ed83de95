#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Something that can be done once and timed: the work in question or the floor that it is compared with.
namespace mervo::bench {

struct Sample {
    std::int64_t wall = 0; ///< ns
    std::int64_t cpu = -1; ///< ns of processor time, of all threads; -1 where it is not asked for
};

class Measure {
public:
    virtual ~Measure() = default;
    virtual Sample sample() = 0;
    /// What there is to say at the end, by name ("resident_kib").
    virtual std::map<std::string, std::int64_t> notes() { return {}; }
};

using Words = std::vector<std::string>;

/// From the words of the command line, the kind of measure first; see pairs.cpp. Throws std::runtime_error.
std::unique_ptr<Measure> makeMeasure(const Words& words);

std::unique_ptr<Measure> makeSpawn(const Words& command); ///< a whole process, until its end
std::unique_ptr<Measure> makeFresh(const Words& folderAndCommand); ///< the same, a folder removed before
std::unique_ptr<Measure> makeAfter(const Words& preparationAndCommand); ///< the same, a shell command run before
std::unique_ptr<Measure> makeGreet(const Words& command); ///< a process, until its first answer
std::unique_ptr<Measure> makeServe(const Words& partRequestAndCommand); ///< one more answer of a running process
std::unique_ptr<Measure> makeInsert(const Words& file); ///< the audit trail's INSERT, committed
std::unique_ptr<Measure> makeWalk(const Words& folder); ///< the first 4 KiB of every file below a folder
std::unique_ptr<Measure> makeStamps(const Words& folder); ///< a stat of every file below a folder, one after the other
std::unique_ptr<Measure> makeRename(const Words& preparationAndList); ///< a loop of renames
std::unique_ptr<Measure> makeScan(const Words& fileStatementText); ///< one statement, all its rows

/// Nanoseconds of processor time that this process has taken.
std::int64_t ownCpu();

/// Nanoseconds that a closure takes.
template <typename Closure>
std::int64_t timed(Closure&& closure)
{
    const auto start = std::chrono::steady_clock::now();
    closure();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start).count();
}

} // namespace mervo::bench
