#pragma once

#include "cockpit/model/icon/StatusIconState.h"

#include <QColor>
#include <QIcon>
#include <QImage>

/// Draws the status icon: the ring shows how much autonomy the agents have, the mark in its middle whether the person
/// is needed, and the ring turns while work goes on. Any thread.
namespace mervo::StatusIconPainter {

/// The label colour contrasts with the ground under the icon: a tray's panel, or a window.
struct Colours {
    QColor label, orange, red;

    bool operator==(const Colours&) const = default;
};

enum class Ground { light, dark };
/// Colours that are legible on this ground.
Colours coloursOn(Ground ground);

/// True if the drawing has one colour only, that of the text around it.
bool isTemplate(const StatusIconState& state);

/// A square drawing on a transparent ground; `t` is the animation's time in seconds. Computed pixel by pixel: Qt's
/// painter takes ten times as long, and this runs 12 times a second for hours.
QImage image(const StatusIconState& state, double t, int pixels, const Colours& colours);

/// False if the difference between the drawings cannot be seen. Both have the same size.
bool isVisiblyOther(const QImage& drawing, const QImage& before);

/// The drawing as an icon that paints itself at any size. It reports few sizes, because a tray on the bus is sent every
/// one of them with each frame. It leaves nothing behind: an icon of pixmaps would leave its key in Qt's cache, and an
/// animation makes millions of icons.
QIcon icon(const StatusIconState& state, double t, const Colours& colours);

} // namespace mervo::StatusIconPainter
