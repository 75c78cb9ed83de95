#pragma once

#include "cockpit/model/operations/Operations.h"
#include "core/policy/PolicyRule.h"

#include <QObject>

#include <functional>
#include <string>
#include <vector>

namespace mervo {

/// The policy rules as the cockpit knows them, and a person's changes of them. Main thread only.
class CockpitRules final : public QObject {
    Q_OBJECT

public:
    explicit CockpitRules(Operations& operations, QObject* parent = nullptr);

    const std::vector<PolicyRule>& all() const { return all_; }
    /// Takes over what the database says.
    void show(std::vector<PolicyRule> rules);

    void add(const PolicyRule& rule);
    void enable(const std::string& ruleId);
    void disable(const std::string& ruleId);
    void remove(const PolicyRule& rule);

Q_SIGNALS:
    void changed();
    /// The database was changed, and is to be read again.
    void readingRequested();

private:
    void write(std::function<void(CockpitStores::Open&)> change);

    Operations& operations_;
    std::vector<PolicyRule> all_;
};

} // namespace mervo
