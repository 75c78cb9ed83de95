#pragma once

#include "core/foundation/StoreDatabase.h"
#include "core/policy/TodayCount.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// One row of the audit trail.
struct AuditEntry {
    std::string timestamp;
    std::string actor;
    std::string action; ///< a tool id, or a management action such as "set_autonomy"
    std::optional<std::string> accountId;
    std::map<std::string, std::string, std::less<>> details;
    std::string outcome;
    std::optional<std::string> reason;

    bool operator==(const AuditEntry&) const = default;

    /// A compact JSON object under the names of the fields, an absent one left out; and back. Decoding gives nothing
    /// when a field is missing that must be there, or has another type.
    std::string encode() const;
    static std::optional<AuditEntry> decode(std::string_view json);
};

/// The append-only record of what the system did, on whose behalf, and why; newest first.
///
/// Never throws: a row that cannot be written is dropped, a read that fails gives an empty list or 0; the reason
/// is reported to StoreFailures. Any thread.
class AuditLog {
public:
    explicit AuditLog(StoreDatabase db) noexcept;
    /// On the home directory's database (StoreDatabase::ofHome).
    static AuditLog& shared() noexcept;

    using Details = std::map<std::string, std::string, std::less<>>;

    /// True when the row is in the trail.
    bool log(std::string_view actor, std::string_view action, const std::optional<std::string>& accountId,
        const Details& details, std::string_view outcome, const std::optional<std::string>& reason) noexcept;

    std::vector<AuditEntry> recent(std::int64_t limit) noexcept;
    std::int64_t count() noexcept;
    /// Entries that contain the text in any column; "%" and "_" are wildcards, ASCII letters match in any case.
    std::vector<AuditEntry> search(std::string_view text, std::int64_t limit) noexcept;
    /// Actions that an allow rule let run unattended since midnight UTC.
    std::int64_t mutationsToday() noexcept;
    /// Rows with action "send" and outcome "sent" since midnight UTC, as earlier versions wrote them.
    std::int64_t sentToday() noexcept;
    /// Deletes rows older than so many days; the number of deleted rows.
    std::int64_t prune(std::int64_t olderThanDays) noexcept;

private:
    StoreDatabase db_;
    TodayCount today_;
};

} // namespace mervo
