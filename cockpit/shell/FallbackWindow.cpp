#include "cockpit/shell/FallbackWindow.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace mervo {

namespace {

constexpr int kIconSize = 32; ///< logical pixels

} // namespace

FallbackWindow::FallbackWindow()
    : icon_(new QLabel(this))
    , summary_(new QLabel(this))
{
    setWindowTitle("Mervo");
    setAttribute(Qt::WA_ShowWithoutActivating); // a tray that goes away is no reason to interrupt anybody
    summary_->setTextFormat(Qt::PlainText);
    auto* reason = new QLabel("This desktop shows no tray icons, so Mervo stays here.", this);
    auto* open = new QPushButton("Open Mervo", this);
    open->setDefault(true);
    connect(open, &QPushButton::clicked, this, &FallbackWindow::openRequested);
    auto* layout = new QGridLayout(this);
    layout->addWidget(icon_, 0, 0, 2, 1);
    layout->addWidget(summary_, 0, 1);
    layout->addWidget(reason, 1, 1);
    layout->addWidget(open, 0, 2, 2, 1);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void FallbackWindow::setIcon(const QIcon& icon)
{
    setWindowIcon(icon);
    icon_->setPixmap(icon.pixmap(QSize(kIconSize, kIconSize), devicePixelRatioF()));
}

void FallbackWindow::setSummary(const QString& summary)
{
    summary_->setText(summary);
}

void FallbackWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    Q_EMIT quitRequested();
}

} // namespace mervo
