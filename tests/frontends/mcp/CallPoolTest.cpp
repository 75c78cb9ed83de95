#include "frontends/mcp/CallPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>

using namespace mervo;
using mcp::CallPool;
using Submission = mcp::CallPool::Submission;

namespace {

/// Calls that go on until the test opens the gate.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    int inside = 0;
    std::multiset<std::string> ran;
    std::multiset<std::string> answered;
    bool idleTold = false;

    CallPool::Outlets outlets()
    {
        return {.perform =
                    [this](const mcp::ToolCall& call) {
                        std::unique_lock lock(mutex);
                        ran.insert(call.id);
                        ++inside;
                        changed.notify_all();
                        changed.wait(lock, [this] { return open; });
                        return call.id;
                    },
            .send =
                [this](std::string line) {
                    std::scoped_lock guard(mutex);
                    answered.insert(std::move(line));
                },
            .becameIdle =
                [this] {
                    std::scoped_lock guard(mutex);
                    idleTold = true;
                    changed.notify_all();
                }};
    }
    void waitForInside(int count)
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return inside >= count; });
    }
    void finish()
    {
        std::unique_lock lock(mutex);
        open = true;
        changed.notify_all();
        changed.wait(lock, [this] { return idleTold; });
    }
};

mcp::ToolCall callNamed(std::string id, std::string argument = {})
{
    return {.id = std::move(id), .tool = nullptr, .args = {{"a", std::move(argument)}}, .actor = "mcp:test"};
}

constexpr int kRunning = static_cast<int>(CallPool::kMostRunning);

} // namespace

TEST(CallPool, refusesAnIdThatIsUnderWayButNotOneThatWasCancelledOrIsDone)
{
    Gate gate;
    CallPool pool(gate.outlets());
    ASSERT_EQ(pool.submit(callNamed("1")), Submission::accepted);
    gate.waitForInside(1);
    EXPECT_EQ(pool.submit(callNamed("1")), Submission::duplicate);
    EXPECT_EQ(pool.submit(callNamed("\"1\"")), Submission::accepted);
    EXPECT_TRUE(pool.cancel("1"));
    EXPECT_EQ(pool.submit(callNamed("1")), Submission::accepted);
    gate.finish();
    EXPECT_EQ(gate.answered, (std::multiset<std::string>{"1", "\"1\""}));
    EXPECT_EQ(pool.submit(callNamed("1")), Submission::accepted);
}

TEST(CallPool, boundsWhatWaitsByCountAndByBytes)
{
    Gate gate;
    CallPool pool(gate.outlets());
    for (int i = 0; i < kRunning; ++i)
        ASSERT_EQ(pool.submit(callNamed(std::to_string(i))), Submission::accepted);
    gate.waitForInside(kRunning);
    const std::string large(CallPool::kMostWaitingBytes / 2 + 1, 'x');
    EXPECT_EQ(pool.submit(callNamed("large", large)), Submission::accepted);
    EXPECT_EQ(pool.submit(callNamed("larger", large)), Submission::full);
    EXPECT_TRUE(pool.cancel("large"));
    EXPECT_EQ(pool.submit(callNamed("larger", large)), Submission::accepted) << "a cancelled call gives its room back";
    pool.dropWaiting();
    for (std::size_t i = 0; i < CallPool::kMostWaiting; ++i)
        ASSERT_EQ(pool.submit(callNamed("w" + std::to_string(i))), Submission::accepted);
    EXPECT_EQ(pool.submit(callNamed("one more")), Submission::full);
    pool.dropWaiting();
    gate.finish();
    EXPECT_EQ(gate.ran.size(), static_cast<std::size_t>(kRunning));
}
