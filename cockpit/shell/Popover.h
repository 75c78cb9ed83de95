#pragma once

#include <QElapsedTimer>
#include <QQuickView>

namespace mervo {

class CockpitModel;

/// The window that opens from the status icon. Its scene is built when it first opens and then kept, with what was
/// typed. Closes on Escape and when another window becomes active.
class Popover final : public QQuickView {
    Q_OBJECT

public:
    explicit Popover(CockpitModel& model);

    /// Opens it beside the icon (see popoverPlace), or brings it forward.
    void open(const QRect& icon);
    /// For a click on the icon.
    void toggle(const QRect& icon);

    void setDark(bool dark);
    void setAnimated(bool animated);

Q_SIGNALS:
    void settingsRequested(const QString& section);
    void quitRequested();

private:
    bool build();
    void setRootProperty(const char* property, const QVariant& value);
    void activationChanged();

    CockpitModel& model_;
    bool dark_ = false, animated_ = true;
    QElapsedTimer sinceLeft_; ///< since another window took over; not valid before
};

} // namespace mervo
