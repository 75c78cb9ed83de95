#pragma once

#include "platform/desktop/Notifier.h"

#include <QDBusServiceWatcher>
#include <QObject>

#include <map>
#include <optional>
#include <string>

class QDBusPendingCallWatcher;

namespace mervo::platform {

/// Messages through org.freedesktop.Notifications (Desktop Notifications Specification 1.2). Every call is
/// asynchronous. The numbers of a service die with it: after a restart nothing of the old one is replaced or removed.
class FreedesktopNotifier final : public QObject, public Notifier {
    Q_OBJECT

public:
    FreedesktopNotifier();

    void post(const Notification& notification) override;
    void remove(const std::string& id) override;

private Q_SLOTS:
    void actionInvoked(uint number, const QString& action);
    void closed(uint number, uint reason);

private:
    /// One of our ids, from its first posting until its message has left the screen.
    struct Standing {
        std::string context;
        uint number = 0; ///< the service's; 0: not known (yet)
        bool isSending = false; ///< a call is under way, and its number belongs to this entry
        bool isUnwanted = false; ///< to be taken away as soon as the number is known
        std::optional<Notification> next; ///< what to show in its place as soon as the number is known
    };
    struct Service {
        bool hasActions = false, hasMarkup = false;
    };

    void askService();
    void serviceAnswered(const QDBusPendingCallWatcher& call);
    void serviceChanged();
    void send(const Notification& notification);
    void sent(const std::string& id, const QDBusPendingCallWatcher& call);
    void close(uint number);
    std::map<std::string, Standing>::iterator withNumber(uint number);

    QDBusServiceWatcher watcher_;
    std::optional<Service> service_; ///< empty: what it can do is not known
    bool isAsking_ = false;
    unsigned generation_ = 0; ///< counts the services; what an earlier one answers is of no use
    std::map<std::string, Standing> standing_;
    std::map<std::string, Notification> waiting_; ///< until the service has said what it can do
};

} // namespace mervo::platform
