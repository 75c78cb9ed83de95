#pragma once

#include "cockpit/model/StatusIconState.h"

#include <QColor>
#include <QIcon>
#include <QImage>

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

/// A square drawing on a transparent ground; `t` is the animation's time in seconds. Pixel by pixel, since Qt's painter
/// takes ten times as long (it hands figures to other threads), and this is done 12 times a second for hours.
QImage image(const StatusIconState& state, double t, int pixels, const Colours& colours);

/// False when no eye would notice that one drawing took the place of the other. Both have the same size.
bool isVisiblyOther(const QImage& drawing, const QImage& before);

/// The drawing as an icon, painted anew for whatever size is asked for. It says to have few sizes, since a tray that is
/// reached over the bus is sent every one of them with each frame. Nothing of it stays anywhere when it goes: an icon
/// of pixmaps leaves its key in Qt's cache, and an animation makes millions of icons.
QIcon icon(const StatusIconState& state, double t, const Colours& colours);

} // namespace mervo::StatusIconPainter
