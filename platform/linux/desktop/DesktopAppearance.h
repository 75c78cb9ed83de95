#pragma once

#include "platform/desktop/Appearance.h"

#include <QDBusVariant>
#include <QObject>
#include <QVariant>

#include <optional>

class QDBusPendingCallWatcher;

namespace mervo::platform {

/// The desktop's settings portal (org.freedesktop.portal.Settings, asked without blocking), and the palette where there
/// is no portal or the person has no preference.
class DesktopAppearance final : public QObject, public Appearance {
    Q_OBJECT

public:
    DesktopAppearance();

    bool isDark() const override;
    bool isAnimated() const override { return isAnimated_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void settingsRead(const QDBusPendingCallWatcher& call);
    /// True when the value is one of ours.
    bool take(const QString& group, const QString& key, const QVariant& value);
    void changed() const;

    std::optional<bool> wantsDark_;
    bool isAnimated_ = true;
};

} // namespace mervo::platform
