#include "cockpit/shell/StatusItem.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace mervo {

namespace {

constexpr int kCompared = 24; ///< pixels of the drawing by which one frame is told from the next

QString waitingText(int waiting, const QString& unreadable)
{
    const QString text = waiting == 0 ? QString("nothing waits for you")
        : waiting == 1                ? QString("1 waits for you")
                                      : QString("%1 wait for you").arg(waiting);
    return unreadable.isEmpty() ? text : waiting == 0 ? unreadable : text + "; " + unreadable;
}

/// The pointer, when it stands on a panel: an icon without a known place was clicked there.
QRect pointerOnPanel()
{
    const QPoint pointer = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (screen == nullptr || screen->availableGeometry().contains(pointer))
        return {};
    return {pointer, QSize(1, 1)};
}

} // namespace

StatusItem::StatusItem(platform::TrayHost& host, const platform::Appearance& appearance)
    : host_(host)
    , appearance_(appearance)
    , open_(menu_.addAction("Open Mervo"))
{
    connect(open_, &QAction::triggered, this, &StatusItem::openRequested);
    menu_.addSeparator();
    connect(menu_.addAction("Quit Mervo"), &QAction::triggered, this, &StatusItem::quitRequested);
    host_.onChange = [this] {
        showWhereItCan();
        repaint();
    };
}

void StatusItem::show()
{
    showWhereItCan();
}

void StatusItem::hide()
{
    host_.onChange = nullptr;
    icon_.reset();
    window_.reset();
}

void StatusItem::showWhereItCan()
{
    if (host_.isPresent()) {
        makeIcon();
        window_.reset();
        return;
    }
    if (window_)
        return;
    window_ = std::make_unique<FallbackWindow>();
    shown_ = {};
    connect(window_.get(), &FallbackWindow::openRequested, this, &StatusItem::openRequested);
    connect(window_.get(), &FallbackWindow::quitRequested, this, &StatusItem::quitRequested);
    window_->setSummary(summary_);
    repaint();
    window_->show();
}

void StatusItem::makeIcon()
{
    if (icon_)
        return;
    icon_ = std::make_unique<QSystemTrayIcon>(icon());
    icon_->setToolTip(summary_);
    icon_->setContextMenu(&menu_);
    connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason != QSystemTrayIcon::Context)
            Q_EMIT activated();
    });
    icon_->show();
}

void StatusItem::setImage(const StatusIconState& state, double t)
{
    state_ = state;
    t_ = t;
    repaint();
}

void StatusItem::setSummary(const QString& mode, int waiting, const QString& unreadable)
{
    summary_ = "Mervo (" + mode + "): " + waitingText(waiting, unreadable);
    open_->setText(waiting == 0 ? QString("Open Mervo") : QString("Open Mervo (%1)").arg(waiting));
    if (icon_)
        icon_->setToolTip(summary_);
    if (window_)
        window_->setSummary(summary_);
}

void StatusItem::repaint()
{
    const QIcon next = icon();
    QImage drawing = next.pixmap({kCompared, kCompared}, 1.0).toImage();
    if (!StatusIconPainter::isVisiblyOther(drawing, shown_))
        return;
    shown_ = std::move(drawing);
    if (icon_)
        icon_->setIcon(next);
    if (window_)
        window_->setIcon(next);
}

StatusIconPainter::Colours StatusItem::colours() const
{
    using StatusIconPainter::Ground;
    const bool isDark = window_ ? appearance_.isDark() : host_.isDark();
    return StatusIconPainter::coloursOn(isDark ? Ground::dark : Ground::light);
}

QIcon StatusItem::icon() const
{
    return StatusIconPainter::icon(state_, t_, colours());
}

QRect StatusItem::geometry() const
{
    const QRect known = icon_ ? icon_->geometry() : QRect();
    return known.isEmpty() ? pointerOnPanel() : known;
}

} // namespace mervo
