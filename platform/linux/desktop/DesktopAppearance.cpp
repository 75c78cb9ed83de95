#include "platform/linux/desktop/DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace mervo::platform {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface");
constexpr int kMiddle = 128; ///< of a lightness to 255

using Settings = QMap<QString, QVariantMap>;

} // namespace

DesktopAppearance::DesktopAppearance()
{
    QCoreApplication::instance()->installEventFilter(this);
    qRegisterMetaType<QDBusVariant>(); // the bus looks for the slot's types by their names
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(
        kService, kPath, kInterface, "SettingChanged", this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, "ReadAll");
    call << QStringList{kAppearance, kGnome};
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        settingsRead(*watcher);
        watcher->deleteLater();
    });
}

bool DesktopAppearance::isDark() const
{
    return wantsDark_.value_or(QGuiApplication::palette().color(QPalette::Window).lightness() < kMiddle);
}

void DesktopAppearance::settingsRead(const QDBusPendingCallWatcher& call)
{
    const QDBusMessage reply = call.reply();
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != "a{sa{sv}}")
        return;
    const auto settings = qdbus_cast<Settings>(reply.arguments().constFirst());
    bool isNews = false;
    for (auto group = settings.begin(); group != settings.end(); ++group) {
        for (auto setting = group->begin(); setting != group->end(); ++setting)
            isNews |= take(group.key(), setting.key(), setting.value());
    }
    if (isNews)
        changed();
}

void DesktopAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    if (take(group, key, value.variant()))
        changed();
}

bool DesktopAppearance::take(const QString& group, const QString& key, const QVariant& value)
{
    if (group == kAppearance && key == "color-scheme") {
        const uint scheme = value.toUInt(); // 1 dark, 2 light, anything else: no preference
        wantsDark_ = scheme == 1 || scheme == 2 ? std::optional(scheme == 1) : std::nullopt;
        return true;
    }
    if (group == kGnome && key == "enable-animations") {
        isAnimated_ = value.toBool();
        return true;
    }
    return false;
}

void DesktopAppearance::changed() const
{
    if (onChange)
        onChange();
}

bool DesktopAppearance::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == QCoreApplication::instance())
        changed();
    return false;
}

} // namespace mervo::platform
