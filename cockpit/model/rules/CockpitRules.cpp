#include "cockpit/model/rules/CockpitRules.h"

#include <utility>

namespace mervo {

CockpitRules::CockpitRules(Operations& operations, QObject* parent)
    : QObject(parent)
    , operations_(operations)
{
}

void CockpitRules::show(std::vector<PolicyRule> rules)
{
    if (rules == all_)
        return;
    all_ = std::move(rules);
    Q_EMIT changed();
}

void CockpitRules::add(const PolicyRule& rule)
{
    write([rule](CockpitStores::Open& open) {
        open.rules.add(rule);
        open.logHuman("rule_add",
            {{"id", rule.id}, {"tool", rule.toolPattern}, {"decision", std::string(rawValue(rule.decision))}});
    });
}

void CockpitRules::enable(const std::string& ruleId)
{
    write([ruleId](CockpitStores::Open& open) {
        open.rules.setEnabled(ruleId, true);
        open.logHuman("rule_enable", {{"id", ruleId}});
    });
}

void CockpitRules::disable(const std::string& ruleId)
{
    write([ruleId](CockpitStores::Open& open) {
        open.rules.setEnabled(ruleId, false);
        open.logHuman("rule_disable", {{"id", ruleId}});
    });
}

void CockpitRules::remove(const PolicyRule& rule)
{
    write([rule](CockpitStores::Open& open) {
        open.rules.remove(rule.id);
        open.logHuman("rule_remove", {{"id", rule.id}, {"decision", std::string(rawValue(rule.decision))}});
    });
}

void CockpitRules::write(std::function<void(CockpitStores::Open&)> change)
{
    operations_.write("changing the rules", [this, change = std::move(change)](CockpitStores::Open& open) {
        change(open);
        Work::come(*this, [this] { Q_EMIT readingRequested(); });
    });
}

} // namespace mervo
