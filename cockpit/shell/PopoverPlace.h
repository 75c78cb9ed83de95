#pragma once

#include <QRect>

namespace mervo {

/// Where a popover of this size stands: beside its icon and away from the edge where that lies, or in the upper right
/// corner when the icon's place is not known (an empty `icon`). Never outside the screen's available part, whose size
/// bounds its own.
QRect popoverPlace(const QRect& icon, const QRect& available, QSize size);

} // namespace mervo
