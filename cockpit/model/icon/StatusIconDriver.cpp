#include "cockpit/model/icon/StatusIconDriver.h"

#include <chrono>

namespace mervo {

namespace {

constexpr std::chrono::milliseconds kFrame(84); ///< the first whole number with no more than 12 in a second
constexpr double kMillisecondsInSecond = 1000;

bool moves(const StatusIconState& state)
{
    return state.working || state.attention == StatusIconState::Attention::approval;
}

} // namespace

StatusIconDriver::StatusIconDriver(QObject* parent)
    : QObject(parent)
{
    timer_.setInterval(kFrame);
    timer_.setTimerType(Qt::PreciseTimer); // a coarse one comes 5 % too early as well as too late
    connect(&timer_, &QTimer::timeout, this, &StatusIconDriver::imageChanged);
}

void StatusIconDriver::apply(const StatusIconState& state)
{
    timer_.stop();
    state_ = state;
    if (moves(state)) {
        epoch_.start();
        timer_.start();
    }
    Q_EMIT imageChanged();
}

double StatusIconDriver::t() const
{
    return isAnimating() ? static_cast<double>(epoch_.elapsed()) / kMillisecondsInSecond : 0;
}

bool StatusIconDriver::isAnimating() const
{
    return timer_.isActive();
}

} // namespace mervo
