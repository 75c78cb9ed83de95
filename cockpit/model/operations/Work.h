#pragma once

#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <utility>

namespace mervo {

/// Runs jobs off the main thread; their results come back through its event loop. Used by the main thread. Destruction
/// waits for jobs that have begun and drops the others.
class Work {
public:
    Work()
    {
        approvals_.setMaxThreadCount(kApprovalsAtOnce);
        chores_.setMaxThreadCount(kChoresAtOnce);
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work() { finish(); }

    /// Approved tools have threads of their own, since each may take minutes.
    template <typename Job, typename Then>
    void approve(QObject& receiver, Job job, Then then)
    {
        start(approvals_, receiver, std::move(job), std::move(then));
    }

    template <typename Job, typename Then>
    void chore(QObject& receiver, Job job, Then then)
    {
        start(chores_, receiver, std::move(job), std::move(then));
    }

    /// From any thread: runs `then` on the receiver's thread, if the receiver still lives by then. It must live now.
    template <typename Then>
    static void come(QObject& receiver, Then then)
    {
        QMetaObject::invokeMethod(&receiver, std::move(then), Qt::QueuedConnection);
    }

    void finish()
    {
        approvals_.clear();
        chores_.clear();
        approvals_.waitForDone();
        chores_.waitForDone();
    }

private:
    static constexpr int kApprovalsAtOnce = 16;
    static constexpr int kChoresAtOnce = 4;

    /// The receiver must live until `finish`.
    template <typename Job, typename Then>
    static void start(QThreadPool& pool, QObject& receiver, Job job, Then then)
    {
        pool.start([&receiver, job = std::make_shared<Job>(std::move(job)), then = std::move(then)] {
            auto result = (*job)();
            come(receiver, [then, result = std::move(result)]() mutable { then(std::move(result)); });
        });
    }

    QThreadPool approvals_, chores_;
};

} // namespace mervo
