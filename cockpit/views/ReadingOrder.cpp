#include "cockpit/views/ReadingOrder.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickWindow>

#include <algorithm>

namespace mervo {
namespace {

void collect(const QQuickItem& parent, QList<QQuickItem*>& found)
{
    QList<QQuickItem*> children = parent.childItems();
    // What a Flickable moves is one child, whose children stand below each other.
    const QQuickItem* above = parent.parentItem();
    if (above != nullptr && above->inherits("QQuickItemView"))
        std::ranges::stable_sort(children, {}, [](const QQuickItem* child) { return child->y(); });
    for (QQuickItem* child : std::as_const(children)) {
        if (!child->isVisible() || !child->isEnabled())
            continue;
        if (child->activeFocusOnTab())
            found.append(child);
        collect(*child, found);
    }
}

/// Scrolls what the control stands in until it can be seen, with a part of its neighbours: a list makes these only when
/// they come into view, and they are the next to have the focus.
void scrollTo(const QQuickItem& control)
{
    constexpr double around = 48;
    for (QQuickItem* view = control.parentItem(); view != nullptr; view = view->parentItem()) {
        if (!view->inherits("QQuickFlickable"))
            continue;
        const double first = view->property("originY").toDouble() - view->property("topMargin").toDouble();
        const double last = view->property("originY").toDouble() + view->property("contentHeight").toDouble()
            + view->property("bottomMargin").toDouble() - view->height();
        const QRectF place = control.mapRectToItem(view, control.boundingRect());
        const double at = view->property("contentY").toDouble();
        double wanted = at;
        if (place.bottom() + around > view->height())
            wanted = at + place.bottom() + around - view->height();
        wanted = std::min(wanted, at + place.top() - around); // the beginning of what is higher than the view
        view->setProperty("contentY", std::clamp(wanted, first, std::max(first, last)));
    }
}

} // namespace

ReadingOrder::~ReadingOrder()
{
    if (watched_ != nullptr) // the end of the children moves the focus
        watched_->disconnect(this);
}

QList<QQuickItem*> ReadingOrder::controls() const
{
    QList<QQuickItem*> found;
    collect(*this, found);
    return found;
}

bool ReadingOrder::move(Direction direction)
{
    const bool forward = direction == Direction::forward;
    const QList<QQuickItem*> order = controls();
    if (order.isEmpty())
        return false;
    qsizetype at = -1; // of the innermost control that holds the focus
    for (const QQuickItem* item = window() != nullptr ? window()->activeFocusItem() : nullptr;
         item != nullptr && at < 0; item = item->parentItem())
        at = order.indexOf(item);
    const qsizetype next = at < 0 ? (forward ? 0 : order.size() - 1) : at + (forward ? 1 : order.size() - 1);
    QQuickItem& control = *order[next % order.size()];
    control.forceActiveFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    scrollTo(control); // at once: the next Tab needs what is made by it
    return true;
}

void ReadingOrder::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemSceneChange) {
        if (watched_ != nullptr) {
            watched_->removeEventFilter(this);
            watched_->disconnect(this);
        }
        watched_ = data.window;
        if (watched_ != nullptr) {
            watched_->installEventFilter(this);
            connect(watched_, &QQuickWindow::activeFocusItemChanged, this, &ReadingOrder::noteFocus);
            connect(watched_, &QQuickWindow::frameSwapped, this, &ReadingOrder::followFocus);
        }
    }
    QQuickItem::itemChange(change, data);
}

void ReadingOrder::noteFocus()
{
    // Nothing may move under a pressed button of the mouse.
    if (QGuiApplication::mouseButtons() == Qt::NoButton)
        sinceFocus_.start();
}

void ReadingOrder::followFocus()
{
    constexpr int settling = 300; // milliseconds in which what was made with the focus finds its place
    if (!sinceFocus_.isValid() || sinceFocus_.hasExpired(settling))
        return;
    const QQuickItem* focused = window() != nullptr ? window()->activeFocusItem() : nullptr;
    if (focused != nullptr && isAncestorOf(focused))
        scrollTo(*focused);
}

bool ReadingOrder::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QQuickItem::eventFilter(watched, event);
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool isTab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
    if (!isTab || key.modifiers().testAnyFlags(Qt::ControlModifier | Qt::AltModifier))
        return false;
    const QQuickItem* focused = window() != nullptr ? window()->activeFocusItem() : nullptr;
    if (focused != nullptr && focused != this && !isAncestorOf(focused) && !focused->isAncestorOf(this))
        return false;
    const bool forward = key.key() == Qt::Key_Tab && !key.modifiers().testFlag(Qt::ShiftModifier);
    return move(forward ? Direction::forward : Direction::backward);
}

} // namespace mervo
