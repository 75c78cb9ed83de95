/// The gate from inside, on a home whose folder MERVO_HOME must name too:
///
///     bench-gate prepare FOLDER RULES ROWS   fills the database
///     bench-gate midnight FOLDER             takes today's rows away: what a call meets as the day begins
///     bench-gate measure FOLDER ROUNDS       takes samples and prints them as bench-pairs does
///
/// The audit rows are spread evenly over 90 UTC days of which the last is today, which has its whole share: what a call
/// meets at the end of a busy day. One row in four is an action that an allow rule let run.
#include "bench/Measure.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/MervoDB.h"
#include "core/foundation/Timestamps.h"
#include "core/policy/ActionPolicy.h"
#include "core/policy/AuditLog.h"
#include "core/policy/HarnessRunner.h"
#include "core/policy/RuleStore.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace mervo::bench {
namespace {

constexpr std::int64_t kDays = 90;
constexpr std::int64_t kRareEvery = 10'000; ///< one row in so many holds the word that is searched for
constexpr std::string_view kRareWord = "lighthouse";

void prepareRules(Database& database, std::int64_t count)
{
    constexpr std::string_view patterns[] = {"mail.send", "mail.*", "*", "cal.delete", "reminder.*"};
    constexpr std::string_view decisions[] = {"allow", "ask", "allow", "deny"};
    database.execute("DELETE FROM policy_rules;");
    for (std::int64_t i = 0; i < count; ++i) {
        Statement row = database.prepare("INSERT INTO policy_rules (id, enabled, account, tool_pattern, match_json,"
                                         " decision, source, created_at) VALUES (?, 1, NULL, ?, ?, ?, 'user', ?);");
        row.bind(fmt::format("{:08X}", i))
            .bind(patterns[i % 5])
            .bind(fmt::format(R"({{"subject":"Topic {}","to":"person{}@"}})", i % 3 == 0 ? 7 : i, i))
            .bind(decisions[i % 4])
            .bind(fmt::format("2026-01-01T{:02}:{:02}:{:02}Z", i / 3600 % 24, i / 60 % 60, i % 60));
        row.run();
    }
}

void prepareRows(Database& database, std::int64_t count)
{
    const auto now = std::chrono::system_clock::now();
    const auto end = std::chrono::floor<std::chrono::days>(now) + std::chrono::days(1);
    const auto span = std::chrono::seconds(kDays * 86'400);
    constexpr std::string_view actions[] = {"mail.search", "mail.body", "mail.draft", "reminder.add", "mail.move"};
    const std::string result(160, 'r');
    database.execute("DELETE FROM audit;");
    for (std::int64_t i = 0; i < count; ++i) {
        const auto offset = std::chrono::seconds(span.count() * i / count);
        Statement row = database.prepare("INSERT INTO audit (timestamp, actor, action, account_id, outcome, reason,"
                                         " details) VALUES (?, ?, ?, NULL, ?, ?, ?);");
        row.bind(Timestamps::string(end - span + offset))
            .bind(i % 2 == 0 ? "mcp:agent" : "auto:morning")
            .bind(actions[i % 5])
            .bind(i % 50 == 0 ? "denied" : "executed")
            .bind(i % 4 == 0 ? fmt::format("rule_allow:{:08X}", i % 1000) : std::string("policy_copilote"))
            .bind(fmt::format(R"({{"account":"Personal","result":"{}","subjectContains":"{} {}"}})", result,
                i % kRareEvery == 0 ? kRareWord : "invoice", i));
        row.run();
    }
}

void prepare(const std::filesystem::path& folder, std::int64_t rules, std::int64_t rows)
{
    MervoDB db(folder);
    db.database().write([&](Database& database) {
        prepareRules(database, rules);
        prepareRows(database, rows);
    });
}

std::string startOfToday()
{
    return Timestamps::now().substr(0, 10) + "T00:00:00Z";
}

void forgetToday(const std::filesystem::path& folder)
{
    MervoDB db(folder);
    db.database().write([](Database& database) {
        database.prepare("DELETE FROM audit WHERE timestamp >= ?;").bind(startOfToday()).run();
    });
}

/// A tool that does nothing and is not recorded: what is left of a call is the gate.
Tool idleTool()
{
    Tool tool;
    tool.id = "mail.send";
    tool.effect = Effect::create;
    tool.build = [](const Args&) { return Invocation{}; };
    tool.nativeRun = [](const Args&) { return std::string(); };
    tool.auditAutoRun = [](const std::string&) { return false; };
    return tool;
}

class Samples {
public:
    template <typename Closure>
    void take(const std::string& name, Closure&& closure)
    {
        walls_[name].push_back(timed(closure));
    }

    nlohmann::json json() const
    {
        nlohmann::json result;
        for (const auto& [name, walls] : walls_)
            result[name] = {{"wall", walls}, {"cpu", nlohmann::json::array()}, {"notes", nlohmann::json::object()}};
        return result;
    }

private:
    std::map<std::string, std::vector<std::int64_t>> walls_;
};

void insist(bool good, const char* what)
{
    if (!good)
        throw std::runtime_error(what);
}

nlohmann::json measure(const std::filesystem::path& folder, int rounds)
{
    const auto db = std::make_shared<MervoDB>(folder);
    RuleStore store(db);
    AuditLog audit(db);
    const Tool tool = idleTool();
    const Args args{{"to", "person4711@orchard.example"}, {"subject", "Topic 7"}, {"body", std::string(2000, 'b')}};
    const std::vector<PolicyRule> rules = store.all();
    const std::string file = (folder / "mervo.sqlite").string();
    const auto bareRules = makeScan({file, "SELECT * FROM policy_rules ORDER BY created_at DESC;", ""});
    const auto bareCount = makeScan({file,
        "SELECT COUNT(*) FROM audit\nWHERE outcome = 'executed'\n  AND reason LIKE 'rule_allow:%'\n"
        "  AND timestamp >= ?;",
        startOfToday()});
    const auto bareSearch = makeScan({file,
        "SELECT * FROM audit\nWHERE action LIKE ? OR actor LIKE ? OR outcome LIKE ?\n"
        "   OR IFNULL(reason,'') LIKE ? OR IFNULL(account_id,'') LIKE ?\n   OR details LIKE ?\n"
        "ORDER BY id DESC LIMIT 200;",
        "%" + std::string(kRareWord) + "%"});

    Samples samples;
    for (int round = 0; round < rounds; ++round) {
        samples.take("decide", [&] {
            insist(
                !ActionPolicy::decide(tool.id, tool.effect, args, AutonomyMode::copilote, rules, 0, 100).reason.empty(),
                "no verdict");
        });
        samples.take("gate", [&] {
            const auto result = HarnessRunner::run(tool, args, "bench", folder, {store, audit});
            insist(std::holds_alternative<HarnessRunner::Executed>(result), "the call did not run");
        });
        samples.take("rules_and_count", [&] {
            bareRules->sample();
            bareCount->sample();
        });
        samples.take("count", [&] { audit.mutationsToday(); });
        samples.take("rules", [&] { insist(store.all().size() == rules.size(), "rules are missing"); });
        samples.take("search", [&] { insist(!audit.search(kRareWord, 200).empty(), "nothing was found"); });
        samples.take("search_statement", [&] { bareSearch->sample(); });
    }
    nlohmann::json result = samples.json();
    result["gate"]["notes"] = {
        {"rules", rules.size()}, {"rows", audit.count()}, {"counted_today", audit.mutationsToday()}};
    return result;
}

} // namespace
} // namespace mervo::bench

int main(int count, char** words)
{
    try {
        const std::string what = count > 1 ? words[1] : "";
        if (what == "prepare" && count == 5) {
            mervo::bench::prepare(words[2], std::stoll(words[3]), std::stoll(words[4]));
        } else if (what == "midnight" && count == 3) {
            mervo::bench::forgetToday(words[2]);
        } else if (what == "measure" && count == 4) {
            std::puts(mervo::bench::measure(words[2], std::stoi(words[3])).dump().c_str());
        } else {
            throw std::runtime_error(
                "usage: bench-gate prepare FOLDER RULES ROWS | midnight FOLDER | measure FOLDER ROUNDS");
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-gate: %s\n", error.what());
        return 1;
    }
}
