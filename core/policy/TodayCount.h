#pragma once

#include "core/foundation/MervoDB.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace mervo {

/// How many actions allow rules let run unattended since a moment, as the full count over the table would say it.
///
/// Counted in full once, and then kept while it is certain to stay: as long as no other connection has committed
/// anything (SQLite's data_version) and this one has changed nothing but what `added` was told. After anything else (a
/// row of another process, a purge, a new day) the next question counts in full again. The first count is not kept: a
/// process that asks once need not ask SQLite for the version. Any thread.
class TodayCount {
public:
    /// Throws sqlite::Error.
    std::int64_t since(const std::shared_ptr<MervoDB>& db, std::string_view moment);

    /// After a row was committed, before the connection is used for anything else. `changesBefore`: totalChanges()
    /// before it.
    void added(const std::shared_ptr<MervoDB>& db, std::int64_t changesBefore, std::string_view timestamp,
        std::string_view outcome, std::string_view reason);

private:
    struct Known {
        std::weak_ptr<MervoDB> db;
        std::string moment;
        std::int64_t version = 0; ///< of what other connections committed
        std::int64_t changes = 0; ///< by this connection
        std::int64_t count = 0;
    };
    std::mutex mutex_;
    bool isAskedAgain_ = false;
    std::optional<Known> known_;
};

} // namespace mervo
