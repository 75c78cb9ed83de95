#pragma once

#include "cockpit/icon/StatusIconPainter.h"
#include "cockpit/model/icon/StatusIconState.h"
#include "cockpit/shell/FallbackWindow.h"
#include "platform/desktop/Appearance.h"
#include "platform/desktop/TrayHost.h"

#include <QImage>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

namespace mervo {

/// The cockpit's permanent presence on the desktop: an icon in the tray, or a small window while there is no tray. A
/// tray has no room for text, so the number of waiting actions is in the icon's tip and menu.
class StatusItem final : public QObject {
    Q_OBJECT

public:
    StatusItem(platform::TrayHost& host, const platform::Appearance& appearance);

    /// Shows the icon, or the window. Called once.
    void show();
    void hide(); ///< for good

    void setImage(const StatusIconState& state, double t);
    /// `unreadable` says what of the queue cannot be read; it may be empty.
    void setSummary(const QString& mode, int waiting, const QString& unreadable);
    /// Draws the icon again, in colours for its present background. A drawing that looks like the current one is not
    /// sent, since each one is work for the panel's process too.
    void repaint();

    QRect geometry() const; ///< of the icon; empty when it is not known

Q_SIGNALS:
    void activated();
    void openRequested();
    void quitRequested();

private:
    void showWhereItCan();
    void makeIcon();
    StatusIconPainter::Colours colours() const;
    QIcon icon() const;

    platform::TrayHost& host_;
    const platform::Appearance& appearance_;
    StatusIconState state_;
    double t_ = 0;
    QImage shown_; ///< the drawing last sent; null: none
    QString summary_ = "Mervo";
    QMenu menu_;
    QAction* open_;
    std::unique_ptr<QSystemTrayIcon> icon_; ///< made once there is a tray: Qt then decides which kind it is
    std::unique_ptr<FallbackWindow> window_;
};

} // namespace mervo
