#include "frontends/mcp/OutputQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>
#include <unistd.h>
#include <vector>

using mervo::mcp::OutputQueue;

namespace {

struct Pipe {
    std::array<int, 2> ends{};
    Pipe() { EXPECT_EQ(::pipe(ends.data()), 0); }
    ~Pipe()
    {
        ::close(ends[0]);
        closeOut();
    }
    void closeOut()
    {
        if (ends[1] >= 0) {
            ::close(ends[1]);
            ends[1] = -1;
        }
    }
    std::string readAll() const
    {
        std::string text;
        std::array<char, 65536> buffer{};
        for (ssize_t length = 0; (length = ::read(ends[0], buffer.data(), buffer.size())) > 0;)
            text.append(buffer.data(), static_cast<std::size_t>(length));
        return text;
    }
};

} // namespace

TEST(OutputQueue, neverWaitsForTheClientAndKeepsEveryLineWhole)
{
    Pipe pipe;
    constexpr int kSenders = 8;
    constexpr int kLines = 300;
    std::atomic<int> told = 0;
    std::string all;
    {
        OutputQueue queue(pipe.ends[1], [&] { ++told; });
        std::vector<std::thread> senders;
        for (int sender = 0; sender < kSenders; ++sender) {
            senders.emplace_back([&queue, sender] {
                for (int i = 0; i < kLines; ++i) { // short ones, and ones longer than a pipe takes at once
                    queue.send(std::string(i % 7 == 0 ? 100'000 : 100, static_cast<char>('a' + sender)) + "\n");
                }
            });
        }
        for (std::thread& sender : senders)
            sender.join(); // all of them come back although nobody has read a byte
        EXPECT_TRUE(queue.congested());
        std::thread reader([&] { all = pipe.readAll(); });
        while (!queue.empty())
            std::this_thread::yield();
        EXPECT_FALSE(queue.congested());
        pipe.closeOut();
        reader.join();
    }
    EXPECT_GT(told, 0);
    int lines = 0;
    for (std::size_t at = 0; at < all.size();) {
        const std::size_t end = all.find('\n', at);
        ASSERT_NE(end, std::string::npos);
        ASSERT_EQ(all.find_first_not_of(all[at], at), end) << "two lines in each other";
        at = end + 1;
        ++lines;
    }
    EXPECT_EQ(lines, kSenders * kLines);
}

TEST(OutputQueue, saysWhenTheClientHasLeft)
{
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    for (const std::size_t size : {std::size_t{10}, std::size_t{1'000'000}}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        std::atomic<bool> told = false;
        OutputQueue queue(ends[1], [&] { told = true; });
        ::close(ends[0]);
        queue.send(std::string(size, 'x') + "\n");
        while (!told)
            std::this_thread::yield();
        EXPECT_TRUE(queue.broken());
        EXPECT_TRUE(queue.empty());
        queue.send("dropped\n");
        EXPECT_TRUE(queue.empty());
        ::close(ends[1]);
    }
    std::signal(SIGPIPE, previous);
}
