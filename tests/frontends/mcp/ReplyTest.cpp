#include "frontends/mcp/Reply.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>

using namespace mervo::mcp;
using Json = nlohmann::json;

namespace {

/// The text that a client reads, after the checks that hold for every line.
std::string textOf(const std::string& line)
{
    EXPECT_LE(line.size(), Reply::kLongestLine);
    EXPECT_EQ(line.find('\n'), line.size() - 1) << "one line";
    const Json message = Json::parse(line);
    EXPECT_EQ(message["jsonrpc"], "2.0");
    EXPECT_EQ(message["result"]["content"].size(), 1U);
    return message["result"]["content"][0]["text"];
}

} // namespace

TEST(Reply, repairsWhatIsNoUtf8)
{
    EXPECT_EQ(textOf(Reply::toolResult("1", "caf\xE9 \xF0\x9F\x98", Era::session)).substr(0, 7), "caf\uFFFD ");
    EXPECT_EQ(textOf(Reply::toolResult("1", "a\n\r\t\x01\"\\\u2028", Era::session)), "a\n\r\t\x01\"\\\u2028");
    EXPECT_EQ(Reply::echo(std::string(127, 'a') + "\u00E9").size(), 127U) << "no half character is repeated";
}

TEST(Reply, cutsATextThatWouldNotFitALineAndSaysHowMuch)
{
    const std::string id = "\"" + std::string(1'000'000, 'i') + "\"";
    struct Case {
        const char* name;
        std::string unit;
    };
    for (const auto& [name, unit] : {Case{"letters", "a"}, Case{"escaped", "\x1B"},
             Case{"bytes that are no UTF-8", "\xFF"}, Case{"mixed", "a\x01\"\U0001F600"}}) {
        for (const std::size_t bytes : {Reply::kLongestLine - 1'020'000, 2 * Reply::kLongestLine}) {
            std::string text;
            text.reserve(bytes + 4);
            while (text.size() < bytes)
                text += unit;
            const std::string seen = textOf(Reply::toolResult(id, text, Era::stateless));
            const std::size_t note = seen.find("\n[cut here: ");
            if (note == std::string::npos) {
                EXPECT_GE(seen.size(), text.size()) << name;
                continue;
            }
            std::size_t left = 0;
            std::size_t whole = 0;
            ASSERT_EQ(std::sscanf(seen.c_str() + note, "\n[cut here: %zu of %zu bytes", &left, &whole), 2) << name;
            EXPECT_EQ(note + left, whole) << name;
            EXPECT_GT(note * 6, Reply::kLongestLine * 8 / 10) << name << ": no more is cut than must be";
        }
    }
}
