#pragma once

#include <QRect>

namespace mervo {

/// The geometry of a popover of this size: beside its icon, on the side away from the screen's edge, or in the upper
/// right corner if the icon's place is unknown (an empty `icon`). Always within the screen's available area, to which
/// its size is limited.
QRect popoverPlace(const QRect& icon, const QRect& available, QSize size);

} // namespace mervo
