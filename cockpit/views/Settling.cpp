#include "cockpit/views/Settling.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleHints>

#include <utility>

namespace mervo {
namespace {

constexpr int kMargin = 200; ///< milliseconds: the second press of a hand that is slower than the desktop expects

} // namespace

Settling::Settling(QQuickItem* parent)
    : QQuickItem(parent)
{
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &Settling::update);
}

Settling::~Settling() = default;

void Settling::restart()
{
    timer_.start(QGuiApplication::styleHints()->mouseDoubleClickInterval() + kMargin);
    update();
}

void Settling::decide()
{
    if (isMouse_)
        decidedAt_ = mouse_;
    restart();
}

void Settling::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemSceneChange) {
        if (watched_ != nullptr)
            watched_->removeEventFilter(this);
        watched_ = data.window;
        if (watched_ != nullptr)
            watched_->installEventFilter(this);
    }
    QQuickItem::itemChange(change, data);
}

/// Sees what the person does before any control does.
bool Settling::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        mouseAt(static_cast<const QMouseEvent*>(event)->globalPosition());
        break;
    case QEvent::Leave:
        decidedAt_.reset();
        update();
        break;
    case QEvent::TouchBegin:
        isMouse_ = false;
        update();
        break;
    case QEvent::KeyPress:
        isMouse_ = false;
        update();
        return isHeld(static_cast<const QKeyEvent&>(*event));
    case QEvent::KeyRelease:
        released_ = static_cast<const QKeyEvent*>(event)->key();
        releasedAt_ = static_cast<const QKeyEvent*>(event)->timestamp();
        break;
    default:
        break;
    }
    return false;
}

/// X11 repeats a key by letting it come up and go down at one moment, which Qt does not always recognise.
bool Settling::isHeld(const QKeyEvent& press) const
{
    const bool isRepeated = press.isAutoRepeat() || (press.key() == released_ && press.timestamp() == releasedAt_);
    const QQuickItem* focused = watched_ != nullptr ? watched_->activeFocusItem() : nullptr;
    const bool isTyping = focused != nullptr && focused->flags().testFlag(ItemAcceptsInputMethod);
    const bool isReturn = press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter;
    return isRepeated && (isReturn || (press.key() == Qt::Key_Space && !isTyping));
}

void Settling::mouseAt(QPointF place)
{
    isMouse_ = true;
    mouse_ = place;
    const int trembling = QGuiApplication::styleHints()->mouseDoubleClickDistance();
    if (decidedAt_ && (place - *decidedAt_).manhattanLength() > trembling)
        decidedAt_.reset();
    update();
}

void Settling::update()
{
    const bool isUnsettled = timer_.isActive() || (isMouse_ && decidedAt_);
    if (std::exchange(isUnsettled_, isUnsettled) != isUnsettled)
        Q_EMIT isUnsettledChanged();
}

} // namespace mervo
