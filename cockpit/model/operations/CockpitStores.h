#pragma once

#include "core/feedback/AskService.h"
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
/// Reads belong to the main thread and are bounded: if another process locks the database for longer, there is no
/// reading, and the caller keeps what it has. Writes run one after the other on a thread of their own, which outwaits a
/// lock of a minute. A database file that was deleted or replaced is opened again.
class CockpitStores {
public:
    /// The stores of one connection. Any thread; whoever works with them keeps them.
    struct Open {
        explicit Open(std::shared_ptr<MervoDB> database);

        /// An audit row of what the person did in the cockpit.
        void logHuman(const char* action, const AuditLog::Details& details, const char* reason = "human");

        std::shared_ptr<MervoDB> db; ///< empty: there is none, and the stores are empty
        AuditLog audit;
        RuleStore rules;
        FeedbackStore feedback;
        AskService asks;
    };

    CockpitStores() = default;
    CockpitStores(const CockpitStores&) = delete;
    CockpitStores& operator=(const CockpitStores&) = delete;
    ~CockpitStores() { finish(); }

    void finish(); ///< waits for the last write

    /// A consistent snapshot of the database. The trail and the rules are absent if the database has not been written
    /// since the last reading.
    struct Reading {
        std::optional<std::vector<AuditEntry>> audit; ///< the latest 25
        std::optional<std::vector<PolicyRule>> rules;
        std::vector<FeedbackItem> questions; ///< the open ones for the cockpit
    };
    /// Nothing when the database cannot be read now; `why` then receives the reason as a sentence. Main thread; waits
    /// 50 ms at most.
    std::optional<Reading> read(std::string& why);

    /// The stores to write to. Opens, and so creates, the database; may wait. Any thread.
    std::shared_ptr<Open> writing();

    /// Runs the work on the thread of writes, after all earlier work. `failed` is called on that thread if stores
    /// failed in it, with their sentences joined by "; ". Called on the main thread.
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
