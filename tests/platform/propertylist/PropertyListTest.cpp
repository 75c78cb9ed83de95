#include "platform/propertylist/PropertyList.h"

#include <gtest/gtest.h>

namespace mervo::platform {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

std::string document(const std::string& inside)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
)" + inside
        + "</plist>\n";
}

TEST(PropertyLists, areWrittenWithTheirKeysInOrderAndReadBack)
{
    const PropertyList list{Dictionary{{"Program", {Array{{std::string("/bin/<a> & b")}, {std::string("é")}}}},
        {"Interval", {std::int64_t(60)}}, {"Below", {std::int64_t(-7)}}, {"AtLoad", {false}},
        {"Empty", {Dictionary{}}}}};
    const std::string xml = propertyListXml(list);
    EXPECT_EQ(xml,
        document("<dict>\n\t<key>AtLoad</key>\n\t<false/>\n\t<key>Below</key>\n\t<integer>-7</integer>\n"
                 "\t<key>Empty</key>\n\t<dict/>\n\t<key>Interval</key>\n\t<integer>60</integer>\n"
                 "\t<key>Program</key>\n\t<array>\n\t\t<string>/bin/&lt;a&gt; &amp; b</string>\n"
                 "\t\t<string>é</string>\n\t</array>\n</dict>\n"));
    EXPECT_EQ(readPropertyList(xml), list);
    EXPECT_EQ(*list.find<std::int64_t>("Interval"), 60);
    EXPECT_EQ(list.find<bool>("Interval"), nullptr);
    EXPECT_EQ(list.find("Absent"), nullptr);
    EXPECT_EQ(PropertyList{true}.find("x"), nullptr);
}

TEST(PropertyLists, ofOtherMakesAreReadOrRefused)
{
    const auto dated = readPropertyList(
        document("<dict><key>a</key><date>2026-01-01T00:00:00Z</date><key>b</key><real>1.5</real></dict>"));
    EXPECT_EQ(dated, (PropertyList{Dictionary{{"a", {}}, {"b", {}}}}));
    std::string deep, close;
    for (int i = 0; i < 5000; ++i) {
        deep += "<array>";
        close += "</array>";
    }
    for (const std::string& bytes : {std::string(), std::string("no list"), std::string("<plist><dict><key>a"),
             std::string("bplist00\xff\xff"), document(deep + close), std::string(2 << 20, ' ')})
        EXPECT_EQ(readPropertyList(bytes), std::nullopt) << bytes.substr(0, 40);
}

} // namespace
} // namespace mervo::platform
