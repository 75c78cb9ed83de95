#include "core/policy/TodayCount.h"

#include "platform/ascii.h"

#include <utility>

namespace mervo {

namespace {

constexpr std::string_view kCountAllowRuleExecutionsToday = "SELECT COUNT(*) FROM audit\n"
                                                            "WHERE outcome = 'executed'\n"
                                                            "  AND reason LIKE 'rule_allow:%'\n"
                                                            "  AND timestamp >= ?;";
constexpr std::string_view kAllowed = "rule_allow:";

/// What LIKE says: letters of ASCII match in any case.
bool isAllowed(std::string_view reason)
{
    return platform::ascii::equalsIgnoringCase(reason.substr(0, kAllowed.size()), kAllowed);
}

std::int64_t versionOf(Database& database)
{
    auto query = database.prepare("PRAGMA data_version");
    return query.step() ? query.integer(0) : 0;
}

std::int64_t fullCount(Database& database, std::string_view moment)
{
    auto query = database.prepare(kCountAllowRuleExecutionsToday);
    return query.bind(moment).step() ? query.integer(0) : 0;
}

bool isSame(const std::weak_ptr<MervoDB>& known, const std::shared_ptr<MervoDB>& db)
{
    return !known.owner_before(db) && !db.owner_before(known);
}

} // namespace

std::int64_t TodayCount::since(const std::shared_ptr<MervoDB>& db, std::string_view moment)
{
    return db->database().read([&](Database& database) {
        const std::scoped_lock guard(mutex_);
        if (!std::exchange(isAskedAgain_, true))
            return fullCount(database, moment);
        // Read before the count: what is committed in between makes the next question count again.
        const std::int64_t version = versionOf(database), changes = database.totalChanges();
        if (!known_ || !isSame(known_->db, db) || known_->moment != moment || known_->version != version
            || known_->changes != changes)
            known_ = Known{db, std::string(moment), version, changes, fullCount(database, moment)};
        return known_->count;
    });
}

void TodayCount::added(const std::shared_ptr<MervoDB>& db, std::int64_t changesBefore, std::string_view timestamp,
    std::string_view outcome, std::string_view reason)
{
    const std::scoped_lock guard(mutex_);
    if (!known_ || !isSame(known_->db, db) || known_->changes != changesBefore)
        return;
    known_->changes = changesBefore + 1;
    if (outcome == "executed" && isAllowed(reason) && timestamp >= known_->moment)
        ++known_->count;
}

} // namespace mervo
