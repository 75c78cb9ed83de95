#include "core/policy/AutonomyRequest.h"

#include "tests/support/Files.h"

#include <barrier>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <thread>

namespace mervo {
namespace {

TEST(AutonomyRequest, loweringAtOnceWithAnotherNeverEndsAboveTheLower)
{
    const test::TempDir memory(test::memory());
    ::setenv("MERVO_HOME", memory.path().c_str(), 1);
    int above = 0;
    for (int round = 0; round < 400; ++round) {
        test::writeFile(memory / "config.json", R"({"autonomyMode":"yolo"})");
        std::barrier start(5);
        std::vector<std::thread> threads;
        for (int agent = 0; agent < 4; ++agent) {
            threads.emplace_back([&] {
                AuditLog rows{MervoDB::inMemory()};
                start.arrive_and_wait();
                (void)AutonomyRequest::make(AutonomyMode::copilote, "mcp:x", rows);
            });
        }
        start.arrive_and_wait();
        const auto owner =
            HarnessConfig::update([](HarnessConfig& config) { config.autonomyMode = AutonomyMode::panic; });
        EXPECT_EQ(owner.failure, "");
        for (std::thread& thread : threads)
            thread.join();
        above += HarnessConfig::load().autonomyMode == AutonomyMode::panic ? 0 : 1;
    }
    EXPECT_EQ(above, 0);
}

} // namespace
} // namespace mervo
