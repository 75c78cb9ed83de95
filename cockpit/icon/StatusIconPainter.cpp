#include "cockpit/icon/StatusIconPainter.h"

#include <QIconEngine>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <span>
#include <vector>

namespace mervo {

namespace {

using Attention = StatusIconState::Attention;
using Colours = StatusIconPainter::Colours;

// All lengths are shares of the drawing's side; angles are degrees, counter-clockwise from three o'clock.
constexpr double kRingRadius = 0.36;
constexpr double kRingWidth = 0.13;
constexpr double kTurn = 1.6; ///< seconds for one turn, clockwise
constexpr double kPulse = 1.2; ///< seconds for one beat
constexpr std::array kSizes{22, 24}; ///< Qt adds one of 64 to the bus where none is between 22 and 64
constexpr int kVisible = 24; ///< of 255: what the strength of some pixel must change by

/// What every part of the drawing is: a line with round ends along a part of a circle. A disc is a dot on the centre.
struct Stroke {
    double radius, width; ///< of the circle, and of the line
    QColor colour;
    double middle = 0, half = 180; ///< degrees: the line goes from middle - half to middle + half
};

Stroke disc(double radius, const QColor& colour)
{
    return {0, 2 * radius, colour};
}

Stroke ring(const StatusIconState& state, double t, const QColor& colour)
{
    const double rotation = state.working ? std::fmod(t / -kTurn * 360, 360) : 0;
    Stroke ring{kRingRadius, kRingWidth, colour};
    switch (state.autonomy) {
    case AutonomyMode::panic:
        ring.middle = 220 + rotation;
        ring.half = state.working ? 170 : 180;
        break;
    case AutonomyMode::copilote:
        ring.middle = 220 + rotation;
        ring.half = 145;
        break;
    case AutonomyMode::yolo:
        ring.middle = 270 + rotation;
        ring.half = 80;
        break;
    }
    return ring;
}

/// The parts from the lowest to the topmost.
std::vector<Stroke> figure(const StatusIconState& state, double t, const Colours& colours)
{
    std::vector<Stroke> parts{ring(state, t, colours.label)};
    switch (state.attention) {
    case Attention::none:
        parts.push_back(disc(0.07, colours.label));
        break;
    case Attention::proposal:
        parts.push_back({0.1, 0.055, colours.orange});
        break;
    case Attention::approval: {
        const double beat = (std::sin(2 * t / kPulse * std::numbers::pi) + 1) * 0.5;
        const double radius = beat * 0.06 + 0.095;
        QColor halo = colours.orange;
        halo.setAlphaF(0.22F);
        parts.push_back(disc(radius * 1.5, halo));
        parts.push_back(disc(radius, colours.orange));
        break;
    }
    case Attention::error:
        parts.push_back(disc(0.115, colours.red));
        break;
    }
    return parts;
}

float squared(float x, float y)
{
    return x * x + y * y;
}

/// A stroke, asked point by point. The unit is a pixel, the origin the middle of the drawing, and y points up.
class Shape {
public:
    Shape(const Stroke& stroke, double side)
        : radius_(static_cast<float>(stroke.radius * side))
        , halfWidth_(static_cast<float>(stroke.width * side / 2))
        , isClosed_(stroke.half >= 180)
        , middle_(direction(stroke.middle))
        , end_(direction(stroke.half))
    {
    }

    /// The share of the pixel around a point that lies inside.
    float coverage(float x, float y) const
    {
        const float distance = squared(x, y);
        if (!touched_.has(distance))
            return 0;
        if (isClosed_ && whole_.has(distance))
            return 1;
        int hits = 0;
        for (int row = 0; row < kPoints; ++row)
            hits += pointsOnRow(x, y + offset(row));
        return static_cast<float>(hits) / (kPoints * kPoints);
    }

private:
    static constexpr int kPoints = 8; ///< along each side of a pixel
    static constexpr float kReach = std::numbers::sqrt2_v<float> / 2; ///< from a pixel's middle to its corner

    struct Direction {
        float x, y;
    };
    static Direction direction(double degrees)
    {
        const double angle = degrees * std::numbers::pi / 180;
        return {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
    }

    /// Squared distances from the middle.
    struct Band {
        Band(float radius, float halfWidth)
            : inner(squared(std::max(radius - halfWidth, 0.0F), 0))
            , outer(halfWidth < 0 ? -1 : squared(radius + halfWidth, 0))
        {
        }
        bool has(float distance) const { return (distance >= inner) & (distance <= outer); }

        float inner, outer;
    };

    static float offset(int point) { return (static_cast<float>(point) + 0.5F) / kPoints - 0.5F; }
    /// Without a branch, so that the compiler takes several points at once.
    int pointsOnRow(float x, float y) const
    {
        int hits = 0;
        for (int column = 0; column < kPoints; ++column)
            hits += contains(x + offset(column), y);
        return hits;
    }
    bool contains(float x, float y) const
    {
        // Turned and folded, the line begins on the x axis and ends above it.
        const float along = x * middle_.x + y * middle_.y;
        const float above = std::abs(y * middle_.x - x * middle_.y);
        const bool isBeside = along * end_.y >= above * end_.x;
        const bool isAtEnd = squared(along - end_.x * radius_, above - end_.y * radius_) <= halfWidth_ * halfWidth_;
        return exact_.has(squared(x, y)) & (isClosed_ | isBeside | isAtEnd);
    }

    float radius_, halfWidth_;
    bool isClosed_;
    Direction middle_, end_;
    Band exact_{radius_, halfWidth_}, touched_{radius_, halfWidth_ + kReach}, whole_{radius_, halfWidth_ - kReach};
};

QRgb laid(QRgb under, const QColor& colour, double share)
{
    const double alpha = colour.alphaF() * share;
    // Nothing here is negative, and lround is a call for each of the pixels.
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    const auto mix = [&](int over, int below) { return static_cast<int>(over * alpha + below * (1 - alpha) + 0.5); };
    return qRgba(mix(colour.red(), qRed(under)), mix(colour.green(), qGreen(under)), mix(colour.blue(), qBlue(under)),
        mix(255, qAlpha(under)));
}

void lay(QImage& image, const Stroke& stroke)
{
    const float middle = static_cast<float>(image.width() - 1) / 2;
    const Shape shape(stroke, image.width());
    for (int row = 0; row < image.height(); ++row) {
        auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(row));
        for (int column = 0; column < image.width(); ++column) {
            if (const float share =
                    shape.coverage(static_cast<float>(column) - middle, middle - static_cast<float>(row));
                share > 0)
                pixels[column] = laid(pixels[column], stroke.colour, share);
        }
    }
}

class Engine final : public QIconEngine {
public:
    Engine(const StatusIconState& state, double t, const Colours& colours)
        : state_(state)
        , t_(t)
        , colours_(colours)
    {
    }

    QIconEngine* clone() const override { return new Engine(*this); }
    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal scale = painter->device()->devicePixelRatio();
        QRectF square(QPointF(), QSizeF(actualSize(place.size(), mode, state)));
        square.moveCenter(QRectF(place).center());
        painter->drawImage(square, image(qRound(square.width() * scale)));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return QPixmap::fromImage(image(actualSize(size, mode, state).width()));
    }
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override
    {
        const int side = std::min(size.width(), size.height());
        return {side, side};
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override
    {
        return {{kSizes[0], kSizes[0]}, {kSizes[1], kSizes[1]}};
    }
    bool isNull() override { return false; }

private:
    /// Drawn once for each size, however many readers there are.
    const QImage& image(int pixels)
    {
        const auto found = std::ranges::find(drawn_, pixels, &QImage::width);
        return found != drawn_.end() ? *found
                                     : drawn_.emplace_back(StatusIconPainter::image(state_, t_, pixels, colours_));
    }

    StatusIconState state_;
    double t_;
    Colours colours_;
    std::vector<QImage> drawn_;
};

} // namespace

StatusIconPainter::Colours StatusIconPainter::coloursOn(Ground ground)
{
    switch (ground) {
    case Ground::dark:
        return {QColor(255, 255, 255, 217), QColor(255, 159, 10), QColor(255, 69, 58)};
    case Ground::light:
        break;
    }
    return {QColor(0, 0, 0, 217), QColor(255, 149, 0), QColor(255, 59, 48)};
}

bool StatusIconPainter::isTemplate(const StatusIconState& state)
{
    return state.attention == Attention::none;
}

QImage StatusIconPainter::image(const StatusIconState& state, double t, int pixels, const Colours& colours)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (const Stroke& part : figure(state, t, colours))
        lay(image, part);
    return image;
}

bool StatusIconPainter::isVisiblyOther(const QImage& drawing, const QImage& before)
{
    const auto bytes = [](const QImage& image) {
        return std::span(image.constBits(), static_cast<std::size_t>(image.sizeInBytes()));
    };
    const auto isFar = [](int one, int other) { return std::abs(one - other) >= kVisible; };
    return drawing.size() != before.size() || !std::ranges::equal(bytes(drawing), bytes(before), std::not_fn(isFar));
}

QIcon StatusIconPainter::icon(const StatusIconState& state, double t, const Colours& colours)
{
    return QIcon(new Engine(state, t, colours)); // the icon owns it
}

} // namespace mervo
