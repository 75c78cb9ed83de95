#include "platform/linux/desktop/FreedesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace mervo::platform {

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
constexpr int kServersChoice = -1; ///< how long it stands
constexpr uchar kNormal = 1; ///< urgency

QDBusMessage callOf(const char* method)
{
    return QDBusMessage::createMethodCall(kService, kPath, kService, method);
}

template <typename Then>
void whenAnswered(QObject* receiver, const QDBusMessage& call, Then then)
{
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), receiver);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, receiver, [watcher, then] {
        watcher->deleteLater();
        then(*watcher);
    });
}

QStringList actionsOf(const Notification& notification)
{
    QStringList actions{"default", "Open"};
    for (const NotificationAction& action : notification.actions)
        actions << QString::fromStdString(action.id) << QString::fromStdString(action.title);
    return actions;
}

QVariantMap hintsOf(const Notification& notification)
{
    QVariantMap hints{{"urgency", QVariant::fromValue(kNormal)}, {"desktop-entry", "mervo"}};
    if (notification.hasSound) {
        hints["sound-name"] = "message-new-instant";
    } else {
        hints["suppress-sound"] = true;
    }
    return hints;
}

} // namespace

FreedesktopNotifier::FreedesktopNotifier()
    : watcher_(kService, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForOwnerChange)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(kService, kPath, kService, "ActionInvoked", this, SLOT(actionInvoked(uint, QString)));
    bus.connect(kService, kPath, kService, "NotificationClosed", this, SLOT(closed(uint, uint)));
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, &FreedesktopNotifier::serviceChanged);
}

void FreedesktopNotifier::post(const Notification& notification)
{
    if (service_)
        return send(notification);
    waiting_[notification.id] = notification;
    askService();
}

void FreedesktopNotifier::remove(const std::string& id)
{
    waiting_.erase(id);
    const auto found = standing_.find(id);
    if (found == standing_.end())
        return;
    if (found->second.isSending) {
        found->second.isUnwanted = true;
        found->second.next.reset();
        return;
    }
    close(found->second.number);
    standing_.erase(found);
}

/// A service that is not running is started by the bus where the desktop has one.
void FreedesktopNotifier::askService()
{
    if (isAsking_)
        return;
    isAsking_ = true;
    whenAnswered(this, callOf("GetCapabilities"), [this](const auto& call) { serviceAnswered(call); });
}

void FreedesktopNotifier::serviceAnswered(const QDBusPendingCallWatcher& call)
{
    isAsking_ = false;
    const QDBusPendingReply<QStringList> reply = call;
    const auto waiting = std::exchange(waiting_, {});
    if (reply.isError())
        return;
    service_ = Service{reply.value().contains("actions"), reply.value().contains("body-markup")};
    for (const auto& [id, notification] : waiting)
        send(notification);
}

void FreedesktopNotifier::serviceChanged()
{
    service_.reset();
    standing_.clear();
    ++generation_;
}

void FreedesktopNotifier::send(const Notification& notification)
{
    Standing& entry = standing_[notification.id];
    entry.isUnwanted = false;
    if (entry.isSending) {
        entry.next = notification;
        return;
    }
    entry.isSending = true;
    entry.context = notification.context;
    const QString body = QString::fromStdString(notification.body);
    QDBusMessage call = callOf("Notify");
    call << QString("Mervo") << entry.number << QString("mervo") << QString::fromStdString(notification.title)
         << (service_->hasMarkup ? body.toHtmlEscaped() : body)
         << (service_->hasActions ? actionsOf(notification) : QStringList{}) << hintsOf(notification) << kServersChoice;
    whenAnswered(this, call, [this, id = notification.id, asked = generation_](const auto& answer) {
        if (asked == generation_)
            sent(id, answer);
    });
}

void FreedesktopNotifier::sent(const std::string& id, const QDBusPendingCallWatcher& call)
{
    const auto found = standing_.find(id);
    if (found == standing_.end())
        return;
    const QDBusPendingReply<uint> reply = call;
    Standing& entry = found->second;
    entry.isSending = false;
    entry.number = reply.isError() ? 0 : reply.value();
    const std::optional<Notification> next = std::move(entry.next);
    entry.next.reset();
    if (next)
        return send(*next);
    if (entry.isUnwanted && entry.number != 0)
        close(entry.number);
    if (entry.isUnwanted || entry.number == 0)
        standing_.erase(found);
}

void FreedesktopNotifier::close(uint number)
{
    QDBusMessage call = callOf("CloseNotification");
    call.setAutoStartService(false);
    call << number;
    QDBusConnection::sessionBus().send(call);
}

/// Some services leave a message on the screen after its action: it is taken away here. A click that comes while
/// another text is on its way into the message was meant for the old one: it decides nothing and opens.
void FreedesktopNotifier::actionInvoked(uint number, const QString& action)
{
    const auto found = withNumber(number);
    if (found == standing_.end())
        return;
    const bool isOutdated = found->second.isSending;
    const std::string context = found->second.context;
    if (!isOutdated) {
        standing_.erase(found);
        close(number);
    }
    if (onResponse)
        onResponse(isOutdated ? "default" : action.toStdString(), context);
}

void FreedesktopNotifier::closed(uint number, uint)
{
    if (const auto found = withNumber(number); found != standing_.end() && !found->second.isSending)
        standing_.erase(found);
}

std::map<std::string, FreedesktopNotifier::Standing>::iterator FreedesktopNotifier::withNumber(uint number)
{
    return std::ranges::find_if(
        standing_, [number](const auto& entry) { return number != 0 && entry.second.number == number; });
}

} // namespace mervo::platform
