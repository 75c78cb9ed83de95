#include "cockpit/shell/PopoverPlace.h"

#include <algorithm>

namespace mervo {

namespace {

constexpr int kMargin = 6; ///< logical pixels to the icon and to the edges

int within(int wanted, int first, int length, int room)
{
    return std::clamp(wanted, first, std::max(first, first + room - length));
}

} // namespace

QRect popoverPlace(const QRect& icon, const QRect& available, QSize size)
{
    const QRect room = available.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    size = size.boundedTo(room.size());
    if (icon.isEmpty())
        return {room.right() + 1 - size.width(), room.top(), size.width(), size.height()};
    const bool isAbove = icon.center().y() < available.center().y();
    const int x = icon.center().x() - size.width() / 2;
    const int y = isAbove ? icon.bottom() + 1 + kMargin : icon.top() - kMargin - size.height();
    return {within(x, room.left(), size.width(), room.width()), within(y, room.top(), size.height(), room.height()),
        size.width(), size.height()};
}

} // namespace mervo
