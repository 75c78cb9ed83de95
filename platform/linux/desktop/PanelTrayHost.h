#pragma once

#include "platform/desktop/Appearance.h"
#include "platform/desktop/TrayHost.h"
#include "platform/linux/desktop/XEmbedTray.h"

#include <QDBusServiceWatcher>
#include <QObject>

namespace mervo::platform {

/// Both kinds of tray: a host of org.kde.StatusNotifierWatcher on the bus, and a window of the older protocol.
class PanelTrayHost final : public QObject, public TrayHost {
    Q_OBJECT

public:
    /// Asks the bus once and waits for its answer, 1 s at most. The appearance outlives this.
    explicit PanelTrayHost(const Appearance& appearance);

    bool isPresent() const override { return hasHost_ || embedded_.isPresent(); }
    bool isDark() const override;

private Q_SLOTS:
    void look();

private:
    void hostFound(bool hasHost);

    const Appearance& appearance_;
    XEmbedTray embedded_;
    QDBusServiceWatcher watcher_;
    bool hasHost_ = false;
    bool isTopBarDark_ = false; ///< the desktop's own bar is dark whatever the windows are
};

} // namespace mervo::platform
