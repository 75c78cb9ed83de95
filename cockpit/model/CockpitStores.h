#pragma once

#include "core/approval/Approval.h"
#include "core/feedback/FeedbackStore.h"
#include "core/policy/AuditLog.h"
#include "core/policy/RuleStore.h"
#include "platform/files.h"

#include <QThreadPool>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// The cockpit's way to the shared stores for as long as it runs, which may be months.
///
/// Reads are for the main thread and bounded: a database that others lock longer than a blink gives nothing, and what
/// was read last stays. Writes are made one after the other on a thread of their own and wait for a lock as long as a
/// locked database may last. A database that was taken away or put in another's place is opened anew.
class CockpitStores {
public:
    /// The stores of one connection. Any thread; whoever works with them keeps them.
    struct Open {
        explicit Open(std::shared_ptr<MervoDB> database);

        std::shared_ptr<MervoDB> db; ///< empty: there is none, and the stores are empty
        AuditLog audit;
        RuleStore rules;
        FeedbackStore feedback;
        AskService asks;
    };

    CockpitStores() = default;
    CockpitStores(const CockpitStores&) = delete;
    CockpitStores& operator=(const CockpitStores&) = delete;
    ~CockpitStores(); ///< after the last write

    /// What the database says now, all of one moment. The trail and the rules are absent when nobody has written to the
    /// database since the last reading.
    struct Reading {
        std::optional<std::vector<AuditEntry>> audit; ///< the latest 25
        std::optional<std::vector<PolicyRule>> rules;
        std::vector<FeedbackItem> questions; ///< the open ones for the cockpit
    };
    /// Nothing when the database cannot be read now, for the reason that `why` receives as a sentence. Main thread;
    /// waits 50 ms at most.
    std::optional<Reading> read(std::string& why);

    /// The stores to write to. Opens, and so creates, the database; may wait. Any thread.
    std::shared_ptr<Open> writing();

    /// Runs the work on the thread of writes, after what was given before, and tells there what the stores could not do
    /// in it: sentences joined by "; ". Main thread.
    void write(std::function<void(Open&)> work, std::function<void(const std::string& why)> failed);

private:
    struct Connection {
        std::shared_ptr<Open> stores;
        std::optional<platform::FileStamp> file; ///< as it was when the connection was opened
        bool isCurrent() const;
    };
    static Connection connected(std::shared_ptr<MervoDB> db);
    std::optional<Reading> readNow();
    std::optional<Reading> readSnapshot(Database& database, Open& stores);

    Connection reader_;
    std::int64_t readVersion_ = -1; ///< of the database's content, as the reading connection counts it; -1: not read
    std::mutex writerMutex_;
    Connection writer_;
    QThreadPool writes_;
};

} // namespace mervo
