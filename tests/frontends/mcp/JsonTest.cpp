#include "frontends/mcp/Json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

using namespace mervo::mcp;

namespace {

bool reads(const std::string& text)
{
    json::Value value;
    return json::parse(text, value) != json::Outcome::malformed;
}

/// Half pairs and numbers beyond a double are read here and refused by the other reader.
bool isMeantToDiffer(const std::string& text)
{
    return text.find("\\ud") != std::string::npos || text.find("\\uD") != std::string::npos
        || text.find("99") != std::string::npos;
}

} // namespace

// Another reader of the same grammar judges the same texts, whole and broken at random.
TEST(Json, readsWhatIsJsonAndNothingElse)
{
    std::vector<std::string> texts{"", " ", "0", "-0", "-", "01", "1.", ".1", "1.0", "1e5", "1E+5", "1e", "1e+", "+1",
        "[]", "[1,]", "[,1]", "[1 2]", "{}", "{\"a\":1,}", "{\"a\"}", "{\"a\":}", "{1:2}", "{\"a\":1 \"b\":2}", "tru",
        "true", "truex", "nullnull", "\"", "\"\\", "\"\\x\"", "\"\\u12\"", "\"\\u00e9\\n\\/\"", "\"a\tb\"", "\"a\x7f\"",
        "\"caf\xc3\xa9\"", "\"\xff\"", "\"\xed\xa0\x80\"", "[[[[]]]]", "[[[]]", "{}}", "]", "\"a\" \"b\"",
        "\xc2\xa0"
        "1",
        "// x", "[1]\f", std::string("\"\0\"", 3), std::string(100'000, '['),
        std::string(1000, '[') + std::string(1000, ']')};
    const std::string seed = R"({"jsonrpc":"2.0","id":-12.5e1,"x":[true,null,{"y":"\u00e9\\ \"z"}],"":{"a":{}}} )";
    const std::string letters = "{}[]\",:\\/u0129eE+-.tfnrb \n\x01\xc3\xa9";
    std::mt19937 random(7);
    for (int i = 0; i < 20'000; ++i) {
        std::string text = seed;
        for (unsigned change = random() % 4 + 1; change > 0; --change) {
            const std::size_t at = random() % text.size();
            const std::string letter(1, letters[random() % letters.size()]);
            text.replace(at, random() % 3, random() % 4 == 0 ? "" : letter);
        }
        texts.push_back(std::move(text));
    }
    int accepted = 0;
    for (const std::string& text : texts) {
        const bool isJson = nlohmann::json::accept(text);
        accepted += isJson ? 1 : 0;
        if (isJson || !isMeantToDiffer(text)) {
            ASSERT_EQ(reads(text), isJson) << ::testing::PrintToString(text);
        }
    }
    EXPECT_FALSE(reads(std::string("1\0", 2)));
    EXPECT_GT(accepted, 1000) << "the changes leave some texts whole";
}
