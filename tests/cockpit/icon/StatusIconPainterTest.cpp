/// The drawing against a second one that knows no painter: each pixel is asked at many points whether it lies inside
/// the figure, and the layers are laid over each other by hand.
#include "cockpit/icon/StatusIconPainter.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <malloc.h>
#include <string>
#include <vector>

namespace {

using mervo::StatusIconState;
using Autonomy = mervo::AutonomyMode;
using Attention = StatusIconState::Attention;

constexpr double kPi = 3.14159265358979;
constexpr int kPoints = 8; // to each side of a pixel
constexpr int kTolerance = 16; // of 255: two ways to smooth an edge
const mervo::StatusIconPainter::Colours kColours{QColor(20, 40, 60), QColor(240, 150, 10), QColor(250, 30, 50)};

/// Coordinates have their origin in the middle of a square with the side 1; y points up.
using Inside = std::function<bool(double x, double y)>;

struct Layer {
    Inside inside;
    QColor colour;
    double alpha = 1;
};

Inside disc(double radius)
{
    return [=](double x, double y) { return std::hypot(x, y) <= radius; };
}

Inside band(double radius, double width)
{
    return [=](double x, double y) { return std::abs(std::hypot(x, y) - radius) <= width / 2; };
}

/// From `from` degrees counter-clockwise over `span` degrees, with round ends.
Inside arc(double from, double span)
{
    return [=](double x, double y) {
        const double angle = std::fmod(std::fmod(std::atan2(y, x) * 180 / kPi - from, 360) + 360, 360);
        if (angle <= span)
            return band(0.36, 0.13)(x, y);
        return std::ranges::any_of(std::vector{from, from + span}, [&](double end) {
            return std::hypot(x - 0.36 * std::cos(end * kPi / 180), y - 0.36 * std::sin(end * kPi / 180)) <= 0.065;
        });
    };
}

Inside ring(const StatusIconState& state, double t)
{
    const double turned = state.working ? -225 * t : 0; // a turn in 1.6 s, clockwise
    switch (state.autonomy) {
    case Autonomy::panic:
        return state.working ? arc(50 + turned, 340) : band(0.36, 0.13);
    case Autonomy::copilote:
        return arc(75 + turned, 290);
    case Autonomy::yolo:
        return arc(190 + turned, 160);
    }
    return {};
}

std::vector<Layer> figure(const StatusIconState& state, double t)
{
    std::vector<Layer> layers = {{ring(state, t), kColours.label}};
    const double beat = 0.125 + 0.03 * std::sin(2 * kPi * t / 1.2); // between 0.095 and 0.155
    switch (state.attention) {
    case Attention::none:
        layers.push_back({disc(0.07), kColours.label});
        break;
    case Attention::proposal:
        layers.push_back({band(0.1, 0.055), kColours.orange});
        break;
    case Attention::approval:
        layers.push_back({disc(1.5 * beat), kColours.orange, 0.22});
        layers.push_back({disc(beat), kColours.orange});
        break;
    case Attention::error:
        layers.push_back({disc(0.115), kColours.red});
        break;
    }
    return layers;
}

/// The share of a pixel that lies inside.
double coverage(const Inside& inside, int column, int row, int side)
{
    int hits = 0;
    for (int point = 0; point < kPoints * kPoints; ++point) {
        const double x = (column + (point % kPoints + 0.5) / kPoints) / side - 0.5;
        const double y = 0.5 - (row + (point / kPoints + 0.5) / kPoints) / side;
        hits += inside(x, y) ? 1 : 0;
    }
    return static_cast<double>(hits) / (kPoints * kPoints);
}

struct Pixel {
    double red = 0, green = 0, blue = 0, alpha = 0; // premultiplied, to 255

    void lay(const QColor& colour, double share)
    {
        red = colour.red() * share + red * (1 - share);
        green = colour.green() * share + green * (1 - share);
        blue = colour.blue() * share + blue * (1 - share);
        alpha = 255 * share + alpha * (1 - share);
    }
    double distance(QRgb other) const
    {
        return std::max({std::abs(red - qRed(other)), std::abs(green - qGreen(other)), std::abs(blue - qBlue(other)),
            std::abs(alpha - qAlpha(other))});
    }
};

Pixel expected(const std::vector<Layer>& layers, int column, int row, int side)
{
    Pixel pixel;
    for (const Layer& layer : layers)
        pixel.lay(layer.colour, layer.alpha * coverage(layer.inside, column, row, side));
    return pixel;
}

void expectDrawn(const StatusIconState& state, double t, int side)
{
    const QImage drawn = mervo::StatusIconPainter::image(state, t, side, kColours);
    ASSERT_EQ(drawn.format(), QImage::Format_ARGB32_Premultiplied);
    const auto layers = figure(state, t);
    for (int pixel = 0; pixel < side * side; ++pixel) {
        const int column = pixel % side;
        const int row = pixel / side;
        const QRgb got = reinterpret_cast<const QRgb*>(drawn.constScanLine(row))[column];
        EXPECT_LE(expected(layers, column, row, side).distance(got), kTolerance)
            << "at " << column << ',' << row << " of " << side << " px, t " << t << ": " << std::hex << got;
    }
}

constexpr Autonomy kAutonomies[] = {Autonomy::panic, Autonomy::copilote, Autonomy::yolo};
constexpr Attention kAttentions[] = {Attention::none, Attention::proposal, Attention::approval, Attention::error};

std::string name(const StatusIconState& state)
{
    return "autonomy " + std::to_string(static_cast<int>(state.autonomy)) + ", attention "
        + std::to_string(static_cast<int>(state.attention)) + (state.working ? ", working" : "");
}

void forEachState(const std::function<void(const StatusIconState&)>& look)
{
    for (const Autonomy autonomy : kAutonomies) {
        for (const Attention attention : kAttentions) {
            for (const bool working : {false, true}) {
                const StatusIconState state{autonomy, attention, working};
                SCOPED_TRACE(name(state));
                look(state);
            }
        }
    }
}

TEST(StatusIcon, looksTheSameFromEveryStateAtTheStart)
{
    forEachState([](const StatusIconState& state) {
        for (const int side : {18, 22, 36, 64})
            expectDrawn(state, 0, side);
    });
}

TEST(StatusIcon, turnsAndBeats)
{
    forEachState([](const StatusIconState& state) {
        for (const double t : {0.3, 0.9, 1.5, 7.25, 3600.1})
            expectDrawn(state, t, 36);
    });
}

TEST(StatusIcon, isATemplateExactlyWithoutAColouredMark)
{
    forEachState([](const StatusIconState& state) {
        EXPECT_EQ(mervo::StatusIconPainter::isTemplate(state), state.attention == Attention::none);
        const QImage drawn = mervo::StatusIconPainter::image(state, 0, 44, kColours);
        bool isColoured = false;
        for (int pixel = 0; pixel < 44 * 44; ++pixel) {
            const QColor colour = drawn.pixelColor(pixel % 44, pixel / 44);
            isColoured |= colour.alpha() > 200 && std::abs(colour.red() - kColours.label.red()) > 20;
        }
        EXPECT_EQ(isColoured, state.attention != Attention::none);
    });
}

/// What the platform does with each new icon of a tray: it takes every size that the icon has, and one of its own.
void show(const QIcon& icon)
{
    QList<QSize> sizes = icon.availableSizes();
    ASSERT_LE(sizes.size(), 2);
    sizes.append({19, 19});
    for (const QSize& size : sizes)
        EXPECT_EQ(icon.pixmap(size, 1.0).toImage().size(), size);
}

TEST(StatusIcon, leavesNothingBehindInTwentyThousandFrames)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    std::array<char, 5> name{"test"};
    char* words = name.data();
    const QGuiApplication application(count, &words);
    constexpr StatusIconState kBusy{Autonomy::copilote, Attention::approval, true};
    std::size_t warm = 0;
    for (int frame = 0; frame < 21'000; ++frame) {
        if (frame == 1'000)
            warm = mallinfo2().uordblks;
        show(mervo::StatusIconPainter::icon(kBusy, frame / 12.0, kColours));
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_LT(mallinfo2().uordblks, warm + 64 * 1024) << "bytes in use, of " << warm << " when warm";
}

TEST(StatusIcon, isOtherToTheEyeWhenItTurnsAndNotWhereAPulseTurnsBack)
{
    using mervo::StatusIconPainter::image;
    using mervo::StatusIconPainter::isVisiblyOther;
    const auto changes = [](const StatusIconState& state, double from, double to) {
        return isVisiblyOther(image(state, to, 24, kColours), image(state, from, 24, kColours));
    };
    constexpr StatusIconState kWaiting{Autonomy::copilote, Attention::approval, false};
    constexpr StatusIconState kWorking{Autonomy::copilote, Attention::none, true};
    for (int frame = 0; frame < 20; ++frame)
        EXPECT_TRUE(changes(kWorking, frame / 12.0, (frame + 1) / 12.0)) << frame;
    EXPECT_TRUE(changes(kWaiting, 0, 1 / 12.0));
    EXPECT_FALSE(changes(kWaiting, 0.28, 0.32)) << "both sides of the widest";
    EXPECT_FALSE(changes(kWaiting, 0.1, 1.3)) << "a beat later";
    EXPECT_TRUE(isVisiblyOther(image(kWaiting, 0, 24, kColours), QImage()));
}

} // namespace
