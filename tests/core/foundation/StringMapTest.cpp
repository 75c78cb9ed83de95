#include "core/foundation/StringMap.h"

#include <gtest/gtest.h>
#include <map>

namespace mervo {
namespace {

using Map = std::map<std::string, std::string>;

TEST(StringMap, decodesObjectsOfTextsAndNothingElse)
{
    const std::pair<std::string, Map> good[]{{"{}", {}}, {" { } ", {}},
        {R"({"b":"1","a":"2"})", {{"a", "2"}, {"b", "1"}}}, {R"({"a":"1","a":"2"})", {{"a", "2"}}},
        {R"({"":"\u0000\/\ud83d\udc4d"})", {{"", std::string("\0/👍", 6)}}}};
    for (const auto& [json, expected] : good)
        EXPECT_EQ(StringMap::decode<Map>(json), expected) << json;
    const std::string bad[]{"{\"a\":\"b\",}", "{,}", "{\"a\":\"b\"\"c\":\"d\"}", "{\"a\"\"b\"}", "{\"a\":\"b\"}}",
        "{\"a\":\"\x1F\"}", "{\"a\":\"b\\\"}", "{\"a", "", "x", "null", "\"a\"", "[]", "[\"a\"]", "1", "{\"a\":1}",
        "{\"a\":null}", "{\"a\":[]}", "{\"a\":{}}", "{\"a\":\"b\"", "{\"a\":\"b\"}{}", "{\"a\":\"\xFF\"}",
        "{\"a\":\"\\ud800\"}", "{a:\"b\"}", "{\"a\":" + std::string(5'000'000, '[')};
    for (const std::string& json : bad)
        EXPECT_FALSE(StringMap::decode<Map>(json)) << json.substr(0, 40);
}

TEST(StringMap, encodesCompactAndSorted)
{
    const Map map{{"to", "a\"b\\\n\x01"}, {"body", "é👍"}, {"", std::string("\0", 1)}};
    const std::string expected = R"({"":"\u0000","body":"é👍","to":"a\"b\\\n\u0001"})";
    EXPECT_EQ(StringMap::encode(map), expected);
    EXPECT_EQ(StringMap::decode<Map>(expected), map);
    EXPECT_EQ(StringMap::encode(Map{}), "{}");
    EXPECT_FALSE(StringMap::encode(Map{{"a", "\xFF"}}));
    EXPECT_FALSE(StringMap::encode(Map{{"\xED\xA0\x80", "a"}}));
}

} // namespace
} // namespace mervo
