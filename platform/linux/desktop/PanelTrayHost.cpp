#include "platform/linux/desktop/PanelTrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace mervo::platform {

namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kPath = QStringLiteral("/StatusNotifierWatcher");
constexpr int kPatience = 1000; ///< milliseconds

QDBusMessage question()
{
    QDBusMessage call = QDBusMessage::createMethodCall(kWatcher, kPath, "org.freedesktop.DBus.Properties", "Get");
    call << kWatcher << QString("IsStatusNotifierHostRegistered");
    call.setAutoStartService(false);
    return call;
}

bool answer(const QDBusMessage& reply)
{
    return reply.type() == QDBusMessage::ReplyMessage && reply.signature() == "v"
        && reply.arguments().constFirst().value<QDBusVariant>().variant().toBool();
}

} // namespace

PanelTrayHost::PanelTrayHost(const Appearance& appearance)
    : appearance_(appearance)
    , watcher_(kWatcher, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForOwnerChange)
{
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    isTopBarDark_ = desktop.contains("GNOME") || desktop.contains("Unity");
    embedded_.onChange = [this] {
        if (onChange)
            onChange();
    };
    QDBusConnection bus = QDBusConnection::sessionBus();
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus.connect(kWatcher, kPath, kWatcher, signal, this, SLOT(look()));
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, &PanelTrayHost::look);
    hasHost_ = answer(bus.call(question(), QDBus::Block, kPatience));
}

bool PanelTrayHost::isDark() const
{
    if (!hasHost_ && embedded_.isDark())
        return *embedded_.isDark();
    return isTopBarDark_ || appearance_.isDark();
}

void PanelTrayHost::look()
{
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question()), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        hostFound(answer(watcher->reply()));
        watcher->deleteLater();
    });
}

void PanelTrayHost::hostFound(bool hasHost)
{
    if (hasHost == hasHost_)
        return;
    hasHost_ = hasHost;
    if (onChange)
        onChange();
}

} // namespace mervo::platform
