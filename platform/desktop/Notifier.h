#pragma once

#include <functional>
#include <string>
#include <vector>

namespace mervo::platform {

struct NotificationAction {
    std::string id; ///< passed to onResponse; "default" is a click on the notification itself
    std::string title;
    bool isDestructive = false;
};

/// One message on the desktop. All texts are plain.
struct Notification {
    std::string id; ///< our own; replaces a notification of the same id that is still shown
    std::string title, body;
    std::vector<NotificationAction> actions; ///< besides the click on the notification itself
    std::string context; ///< passed to onResponse, not shown
    bool hasSound = true;
};

/// The desktop's notification service. Never throws or blocks: without a running service nothing is shown, and one that
/// starts later gets only what is posted then. Main thread only.
class Notifier {
public:
    Notifier() = default;
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;
    virtual ~Notifier() = default;

    virtual void post(const Notification& notification) = 0;
    /// Closes the notification with this id, if it is shown.
    virtual void remove(const std::string& id) = 0;

    /// Called on the main thread's event loop when the person answers, at most once for each notification.
    std::function<void(const std::string& actionId, const std::string& context)> onResponse;
};

} // namespace mervo::platform
