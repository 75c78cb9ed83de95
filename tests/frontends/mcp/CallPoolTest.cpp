#include "frontends/mcp/CallPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <semaphore>

using namespace mervo;
using mcp::CallPool;
using Submission = mcp::CallPool::Submission;

namespace {

mcp::ToolCall callNamed(std::string id, std::string argument = {})
{
    return {.id = std::move(id), .tool = nullptr, .args = {{"a", std::move(argument)}}, .actor = "mcp:test"};
}

constexpr int kRunning = static_cast<int>(CallPool::kMostRunning);

} // namespace

TEST(CallPool, boundsWhatWaitsByCountAndByBytes)
{
    std::promise<void> gate;
    std::atomic<int> ran = 0;
    std::counting_semaphore<> inside{0}, idle{0};
    CallPool pool({.perform =
                       [&, open = gate.get_future().share()](const mcp::ToolCall& call) {
                           ++ran;
                           inside.release();
                           open.wait();
                           return call.id;
                       },
        .send = [](const std::string&) {},
        .becameIdle = [&] { idle.release(); }});
    for (int i = 0; i < kRunning; ++i)
        ASSERT_EQ(pool.submit(callNamed(std::to_string(i))), Submission::accepted);
    for (int i = 0; i < kRunning; ++i)
        inside.acquire();
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
    gate.set_value();
    idle.acquire();
    EXPECT_EQ(ran, kRunning);
}
