#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace mervo {

/// SIGTERM, SIGINT and SIGHUP as a request on the event loop. One object in a process.
class TerminationSignals final : public QObject {
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;
    Q_DISABLE_COPY_MOVE(TerminationSignals)

Q_SIGNALS:
    void received();

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace mervo
