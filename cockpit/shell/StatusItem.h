#pragma once

#include "cockpit/icon/StatusIconPainter.h"
#include "cockpit/model/StatusIconState.h"
#include "cockpit/shell/FallbackWindow.h"
#include "platform/desktop/Appearance.h"
#include "platform/desktop/TrayHost.h"

#include <QImage>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

namespace mervo {

/// What stands for the cockpit on the desktop all the time: the icon in the tray, and a small window as long as there
/// is no tray. A tray has no room for text, so the number of what waits is in the icon's tip and in its menu.
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
    /// Draws again, in the colours that the ground under the icon has now. A drawing that looks like the one that is
    /// shown goes nowhere: each costs the panel's process work as well.
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
    QImage shown_; ///< the drawing that was last given away; null: none
    QString summary_ = "Mervo";
    QMenu menu_;
    QAction* open_;
    std::unique_ptr<QSystemTrayIcon> icon_; ///< made when there is a tray: Qt settles then which kind it is
    std::unique_ptr<FallbackWindow> window_;
};

} // namespace mervo
