#include "cockpit/shell/PopoverPlace.h"

#include <gtest/gtest.h>

#include <ostream>

void PrintTo(const QRect& rect, std::ostream* out)
{
    *out << rect.x() << ',' << rect.y() << ' ' << rect.width() << 'x' << rect.height();
}

TEST(PopoverPlace, isBesideTheIconAndOnTheScreen)
{
    const struct {
        const char* name;
        QRect icon, available;
        QSize size;
        QRect expected;
    } cases[] = {
        {"panel above", {1200, 2, 22, 22}, {0, 26, 1280, 774}, {400, 600}, {874, 32, 400, 600}},
        {"in the middle of a panel above", {640, 2, 20, 22}, {0, 26, 1280, 774}, {400, 600}, {449, 32, 400, 600}},
        {"panel below", {1200, 777, 22, 22}, {0, 0, 1280, 774}, {400, 600}, {874, 168, 400, 600}},
        {"panel at the left", {2, 700, 22, 22}, {26, 0, 1254, 800}, {400, 600}, {32, 94, 400, 600}},
        {"second screen", {3000, 2, 22, 22}, {1920, 26, 1920, 1054}, {400, 600}, {2810, 32, 400, 600}},
        {"no place known", {}, {0, 26, 1280, 774}, {400, 600}, {874, 32, 400, 600}},
        {"small screen", {600, 2, 22, 22}, {0, 26, 640, 454}, {800, 600}, {6, 32, 628, 442}},
    };
    for (const auto& [name, icon, available, size, expected] : cases)
        EXPECT_EQ(mervo::popoverPlace(icon, available, size), expected) << name;
}
