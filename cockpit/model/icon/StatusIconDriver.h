#pragma once

#include "cockpit/model/icon/StatusIconState.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace mervo {

/// Says when the status icon must be drawn again, and at which time of its animation. Draws nothing itself: on each
/// imageChanged, the owner of the icon paints `state` at `t`. The timer runs only during an animation. Main thread
/// only.
class StatusIconDriver : public QObject {
    Q_OBJECT

public:
    explicit StatusIconDriver(QObject* parent = nullptr);

    const StatusIconState& state() const { return state_; }
    /// Shows a state. Its animation starts from the beginning, also if the state is the same.
    void apply(const StatusIconState& state);

    double t() const; ///< seconds of animation; 0 while nothing moves
    bool isAnimating() const;

Q_SIGNALS:
    void imageChanged();

private:
    StatusIconState state_;
    QTimer timer_;
    QElapsedTimer epoch_;
};

} // namespace mervo
