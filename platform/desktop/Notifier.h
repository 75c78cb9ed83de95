#pragma once

#include <functional>
#include <string>
#include <vector>

namespace mervo::platform {

struct NotificationAction {
    std::string id; ///< given back in the response; "default" is the notification itself
    std::string title;
    bool isDestructive = false;
};

/// One message on the desktop. All texts are plain.
struct Notification {
    std::string id; ///< ours: a notification with the same id that still stands is replaced
    std::string title, body;
    std::vector<NotificationAction> actions; ///< besides the click on the notification itself
    std::string context; ///< given back in the response, not shown
    bool hasSound = true;
};

/// Messages of the desktop's notification service. Nothing here throws or blocks: where no service answers, nothing is
/// shown, and one that comes back later gets what is posted then. Main thread only.
class Notifier {
public:
    Notifier() = default;
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;
    virtual ~Notifier() = default;

    virtual void post(const Notification& notification) = 0;
    /// Takes a notification with this id from the screen, if it stands there.
    virtual void remove(const std::string& id) = 0;

    /// A person's answer: the action's id ("default" for the notification itself) and the context. Called on the main
    /// thread's event loop, at most once for each notification.
    std::function<void(const std::string& actionId, const std::string& context)> onResponse;
};

} // namespace mervo::platform
