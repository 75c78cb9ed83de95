#include "core/policy/RuleStore.h"

#include "core/foundation/StoreBoundary.h"
#include "core/foundation/StringMap.h"

namespace mervo {

namespace {

constexpr std::string_view kAll = "SELECT * FROM policy_rules ORDER BY created_at DESC;";
constexpr std::string_view kRule = "SELECT * FROM policy_rules WHERE id = ?;";
constexpr std::string_view kAdd =
    "INSERT INTO policy_rules (id, enabled, account, tool_pattern, match_json, decision, source, created_at)\n"
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?)\n"
    "ON CONFLICT(id) DO UPDATE SET\n"
    "    enabled = excluded.enabled, account = excluded.account,\n"
    "    tool_pattern = excluded.tool_pattern, match_json = excluded.match_json,\n"
    "    decision = excluded.decision, source = excluded.source;";
constexpr std::string_view kRemove = "DELETE FROM policy_rules WHERE id = ?;";
constexpr std::string_view kSetEnabled = "UPDATE policy_rules SET enabled = ? WHERE id = ?;";

constexpr std::string_view kNotRead = "the rules could not be read, and none applies";

/// Anything unknown waits for a person.
PolicyRule::Decision decision(std::string_view text)
{
    for (const auto known : {PolicyRule::Decision::allow, PolicyRule::Decision::deny}) {
        if (text == rawValue(known))
            return known;
    }
    return PolicyRule::Decision::ask;
}

PolicyRule::Source source(std::string_view text)
{
    return text == rawValue(PolicyRule::Source::learned) ? PolicyRule::Source::learned : PolicyRule::Source::user;
}

PolicyRule toRule(const Statement& row)
{
    PolicyRule rule;
    rule.id = row.text("id");
    rule.enabled = row.integer("enabled") != 0;
    rule.account = row.optionalText("account");
    rule.toolPattern = row.text("tool_pattern");
    rule.match = StringMap::decode<decltype(rule.match)>(row.text("match_json")).value_or(decltype(rule.match){});
    rule.decision = decision(row.text("decision"));
    rule.source = source(row.text("source"));
    rule.createdAt = row.text("created_at");
    return rule;
}

template <typename Work>
void change(const StoreDatabase& db, Work&& work) noexcept
{
    orElse("the rule could not be changed", db, false, [&](Database& database) {
        database.write(work);
        return true;
    });
}

} // namespace

RuleStore::RuleStore(StoreDatabase db) noexcept
    : db_(std::move(db))
{
}

RuleStore& RuleStore::shared() noexcept
{
    // Never destroyed: a thread may still be using it while the process ends.
    static RuleStore& store = *new RuleStore(StoreDatabase::ofHome());
    return store;
}

std::vector<PolicyRule> RuleStore::all() noexcept
{
    return orElse(kNotRead, db_, std::vector<PolicyRule>{}, [](Database& database) {
        return database.read([](Database& connection) {
            std::vector<PolicyRule> rules;
            auto query = connection.prepare(kAll);
            while (query.step())
                rules.push_back(toRule(query));
            return rules;
        });
    });
}

std::optional<PolicyRule> RuleStore::rule(std::string_view id) noexcept
{
    return orElse(kNotRead, db_, std::optional<PolicyRule>{}, [&](Database& database) {
        return database.read([&](Database& connection) {
            auto query = connection.prepare(kRule);
            return query.bind(id).step() ? std::optional(toRule(query)) : std::nullopt;
        });
    });
}

void RuleStore::add(const PolicyRule& rule) noexcept
{
    change(db_, [&](Database& connection) {
        connection.prepare(kAdd)
            .bind(rule.id)
            .bind(rule.enabled ? 1 : 0)
            .bind(rule.account)
            .bind(rule.toolPattern)
            .bind(StringMap::encode(rule.match).value_or("{}"))
            .bind(rawValue(rule.decision))
            .bind(rawValue(rule.source))
            .bind(rule.createdAt)
            .run();
    });
}

void RuleStore::remove(std::string_view id) noexcept
{
    change(db_, [&](Database& connection) { connection.prepare(kRemove).bind(id).run(); });
}

void RuleStore::setEnabled(std::string_view id, bool enabled) noexcept
{
    change(db_, [&](Database& connection) { connection.prepare(kSetEnabled).bind(enabled ? 1 : 0).bind(id).run(); });
}

} // namespace mervo
