#pragma once

#include "cockpit/model/StatusIconState.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace mervo {

/// When the status icon must be drawn anew, and at which time of its animation. Draws nothing itself: whoever shows the
/// icon paints `state` at `t` on each imageChanged. A timer runs only while something moves. Main thread only.
class StatusIconDriver : public QObject {
    Q_OBJECT

public:
    explicit StatusIconDriver(QObject* parent = nullptr);

    const StatusIconState& state() const { return state_; }
    /// Takes a state over, also an equal one: the animation begins again at its start.
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
