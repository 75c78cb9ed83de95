#pragma once

#include "cockpit/model/StatusIconState.h"

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QRectF>

class QPainter;

/// Draws the status icon from numbers: the ring says how much autonomy the agents have, the mark in its middle whether
/// something wants the person, and the ring turns while work goes on. Any thread.
namespace mervo::StatusIconPainter {

/// What a mark is drawn with. The label colour is that of the ground under the icon: a tray's panel, or a window.
struct Colours {
    QColor label, orange, red;

    bool operator==(const Colours&) const = default;
};

/// Colours that are legible on a dark ground, or on a light one.
Colours coloursOn(bool darkGround);

/// True when the drawing is a stencil: one colour, that of what is written around it.
bool isTemplate(const StatusIconState& state);

/// Draws into the middle of a rectangle; `t` is the animation's time in seconds.
void paint(QPainter& painter, const QRectF& place, const StatusIconState& state, double t, const Colours& colours);

/// A square drawing on a transparent ground.
QImage image(const StatusIconState& state, double t, int pixels, const Colours& colours);

/// The drawing in the sizes that trays ask for, so that none is scaled.
QIcon icon(const StatusIconState& state, double t, const Colours& colours);

} // namespace mervo::StatusIconPainter
