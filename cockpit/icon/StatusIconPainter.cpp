#include "cockpit/icon/StatusIconPainter.h"

#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace mervo {

namespace {

using Autonomy = StatusIconState::Autonomy;
using Attention = StatusIconState::Attention;

// All lengths are shares of the drawing's side; angles are degrees, counter-clockwise from three o'clock.
constexpr double kRingRadius = 0.36;
constexpr double kRingWidth = 0.13;
constexpr double kTurn = 1.6; ///< seconds for one turn, clockwise
constexpr double kPulse = 1.2; ///< seconds for one beat
constexpr int kSizes[] = {16, 18, 22, 24, 32, 36, 44, 48, 64};

struct Arc {
    double base, half;
};

Arc arcOf(const StatusIconState& state)
{
    switch (state.autonomy) {
    case Autonomy::panic:
        return {220, 170};
    case Autonomy::copilote:
        return {220, 145};
    case Autonomy::yolo:
        return {270, 80};
    }
    return {220, 170};
}

// Figures are polygons with a corner for every few degrees: a painter flattens the curves of a drawing this small so
// coarsely that one sees it.
constexpr double kStep = 4;

QPointF onCircle(QPointF centre, double radius, double degrees)
{
    const double angle = degrees * std::numbers::pi / 180;
    return centre + QPointF(radius * std::cos(angle), -radius * std::sin(angle));
}

void appendArc(QPolygonF& outline, QPointF centre, double radius, double from, double span)
{
    const int steps = static_cast<int>(std::ceil(std::abs(span) / kStep));
    for (int step = 0; step <= steps; ++step)
        outline << onCircle(centre, radius, from + span * step / steps);
}

QPolygonF circle(double radius)
{
    QPolygonF outline;
    appendArc(outline, {}, radius, 0, 360);
    return outline;
}

QPainterPath disc(double radius)
{
    QPainterPath path;
    path.addPolygon(circle(radius));
    return path;
}

QPainterPath band(double radius, double width)
{
    QPainterPath path; // its odd-even rule leaves the inner circle out
    path.addPolygon(circle(radius + width / 2));
    path.addPolygon(circle(radius - width / 2));
    return path;
}

/// A part of a band, with round ends.
QPainterPath bow(double radius, double width, double from, double span)
{
    QPolygonF outline;
    appendArc(outline, {}, radius + width / 2, from, span);
    appendArc(outline, onCircle({}, radius, from + span), width / 2, from + span, 180);
    appendArc(outline, {}, radius - width / 2, from + span, -span);
    appendArc(outline, onCircle({}, radius, from), width / 2, from + 180, 180);
    QPainterPath path;
    path.setFillRule(Qt::WindingFill); // the ends of a long bow overlap
    path.addPolygon(outline);
    return path;
}

QPainterPath ring(const StatusIconState& state, double t, double side)
{
    if (state.autonomy == Autonomy::panic && !state.working)
        return band(side * kRingRadius, side * kRingWidth);
    const double rotation = state.working ? std::fmod(t / -kTurn * 360, 360) : 0;
    const auto [base, half] = arcOf(state);
    return bow(side * kRingRadius, side * kRingWidth, base + rotation - half, 2 * half);
}

void drawMark(QPainter& painter, Attention attention, double t, double side, const StatusIconPainter::Colours& colours)
{
    switch (attention) {
    case Attention::none:
        painter.fillPath(disc(side * 0.07), colours.label);
        return;
    case Attention::proposal:
        painter.fillPath(band(side * 0.1, side * 0.055), colours.orange);
        return;
    case Attention::approval: {
        const double beat = (std::sin(2 * t / kPulse * std::numbers::pi) + 1) * 0.5;
        const double radius = (beat * 0.06 + 0.095) * side;
        QColor halo = colours.orange;
        halo.setAlphaF(0.22F);
        painter.fillPath(disc(radius * 1.5), halo);
        painter.fillPath(disc(radius), colours.orange);
        return;
    }
    case Attention::error:
        painter.fillPath(disc(side * 0.115), colours.red);
        return;
    }
}

} // namespace

StatusIconPainter::Colours StatusIconPainter::coloursOn(bool darkGround)
{
    if (darkGround)
        return {QColor(255, 255, 255, 217), QColor(255, 159, 10), QColor(255, 69, 58)};
    return {QColor(0, 0, 0, 217), QColor(255, 149, 0), QColor(255, 59, 48)};
}

bool StatusIconPainter::isTemplate(const StatusIconState& state)
{
    return state.attention == Attention::none;
}

void StatusIconPainter::paint(
    QPainter& painter, const QRectF& place, const StatusIconState& state, double t, const Colours& colours)
{
    const double side = std::min(place.width(), place.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place.center());
    painter.fillPath(ring(state, t, side), colours.label);
    drawMark(painter, state.attention, t, side, colours);
    painter.restore();
}

QImage StatusIconPainter::image(const StatusIconState& state, double t, int pixels, const Colours& colours)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paint(painter, QRectF(0, 0, pixels, pixels), state, t, colours);
    return image;
}

QIcon StatusIconPainter::icon(const StatusIconState& state, double t, const Colours& colours)
{
    QIcon icon;
    for (const int pixels : kSizes)
        icon.addPixmap(QPixmap::fromImage(image(state, t, pixels, colours)));
    return icon;
}

} // namespace mervo
