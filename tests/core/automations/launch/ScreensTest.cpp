#include "core/automations/launch/RondelScreens.h"

#include <gtest/gtest.h>

namespace {

using mervo::RondelScreens;
using mervo::platform::Screen;

Screen screen(double x, double y, double width, double height, bool isMain = false)
{
    return {.name = "", .x = x, .y = y, .width = width, .height = height, .isMain = isMain};
}

TEST(RondelScreens, turnsFramesIntoTheCoordinatesOfScripts)
{
    struct Case {
        const char* name;
        std::vector<Screen> screens;
        std::vector<RondelScreens::Display> expected;
    };
    const Case cases[] = {
        {"no screen", {}, {}},
        {"one", {screen(0, 0, 1440, 900, true)}, {{0, "{0, 0, 1440, 900}", "1440x900", true}}},
        {"above, to the left and below, the reference last",
            {screen(-1920, 900, 1920, 1080), screen(100, -768, 1024, 768), screen(0, 0, 1440, 900, true)},
            {{0, "{-1920, -1080, 0, 0}", "1920x1080", false}, {1, "{100, 900, 1124, 1668}", "1024x768", false},
                {2, "{0, 0, 1440, 900}", "1440x900", true}}},
        {"none at the origin: the first counts, and the main one is another",
            {screen(10, 20, 800, 600), screen(810, 220, 800, 600, true)},
            {{0, "{10, 0, 810, 600}", "800x600", false}, {1, "{810, -200, 1610, 400}", "800x600", true}}},
        {"the first of two at the origin is the reference", {screen(0, 0, 800, 600, true), screen(0, 0, 1024, 768)},
            {{0, "{0, 0, 800, 600}", "800x600", true}, {1, "{0, -168, 1024, 600}", "1024x768", false}}},
        {"fractions are rounded down, below zero as well",
            {screen(0, 0, 1280.5, 720.5, true), screen(-0.5, 720.75, 100.25, 100.5)},
            {{0, "{0, 0, 1280, 720}", "1280x720", true}, {1, "{-1, -101, 99, -1}", "100x100", false}}},
    };
    for (const auto& [name, screens, expected] : cases)
        EXPECT_EQ(RondelScreens::displays(screens), expected) << name;
}

} // namespace
