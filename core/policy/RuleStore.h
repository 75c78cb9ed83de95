#pragma once

#include "core/foundation/StoreDatabase.h"
#include "core/policy/PolicyRule.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace mervo {

/// The owner's rules, newest first. Never throws: a read that fails gives an empty list, a write that fails is
/// dropped; the reason is reported to StoreFailures. Read whole on every call of the gate; a change applies
/// to the next call in any process.
class RuleStore {
public:
    explicit RuleStore(StoreDatabase db) noexcept;
    /// On the home directory's database (StoreDatabase::ofHome).
    static RuleStore& shared() noexcept;

    std::vector<PolicyRule> all() noexcept;
    std::optional<PolicyRule> rule(std::string_view id) noexcept;
    /// Inserts, or changes the row with this id, whose creation time then stays.
    void add(const PolicyRule& rule) noexcept;
    void remove(std::string_view id) noexcept;
    void setEnabled(std::string_view id, bool enabled) noexcept;

private:
    StoreDatabase db_;
};

} // namespace mervo
