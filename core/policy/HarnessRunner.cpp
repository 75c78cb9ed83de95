#include "core/policy/HarnessRunner.h"

#include "core/foundation/FailureOf.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/StoreFailures.h"
#include "core/foundation/Text.h"
#include "core/foundation/Timestamps.h"
#include "core/policy/PendingStore.h"
#include "core/policy/Remarks.h"
#include "core/policy/RunningActs.h"
#include "core/scripting/OSAScript.h"
#include "platform/stop.h"
#include "platform/unicode.h"

#include <algorithm>

namespace mervo {

namespace {

using HarnessRunner::Error;
using HarnessRunner::Executed;
using HarnessRunner::Execution;
using HarnessRunner::Explanation;
using HarnessRunner::Pending;
using HarnessRunner::Result;
using HarnessRunner::Stores;

constexpr const char* kUnnamedFailure = "the tool failed without saying why";

/// What the work gives; `unread` is the sentence of what failed in it.
template <typename Work>
auto heard(std::string& unread, Work&& work)
{
    const StoreFailures::Scope failures;
    auto result = work();
    unread = failures.first();
    return result;
}

/// A run's failure as the caller and the trail get it. Once this process was asked to stop, that is the reason.
std::string reasonOf(const std::string& failure)
{
    if (const char* ended = platform::Stop::reason())
        return std::string(ended) + " while it ran; it may have acted";
    return Text::trimmed(failure).empty() ? std::string(kUnnamedFailure) : failure;
}

/// What the gate knows of a call: all that a verdict stands on, read afresh, and the verdict.
Explanation judge(const Tool& tool, const Args& args, Stores stores)
{
    Explanation found;
    const auto checked = [&] {
        checkLength(args);
        (void)tool.build(args);
    };
    found.refusal = failureOf(checked, kUnnamedFailure);
    if (found.refusal)
        return found;
    const HarnessConfig config = HarnessConfig::load();
    found.mode = config.autonomyMode;
    found.dailyCap = config.dailyMutationCap;
    const Database::OneWait wait;
    found.rules = heard(found.rulesUnread, [&] { return stores.rules.all(); });
    found.mutationsToday = heard(found.countUnread, [&] { return stores.audit.mutationsToday(); });
    found.outcome = ActionPolicy::decide(
        tool.id, tool.effect, args, found.mode, found.rules, found.mutationsToday, found.dailyCap, &found.trace);
    return found;
}

/// One judged call: what the three branches share.
struct Call {
    const Tool& tool;
    const Args& args;
    std::string_view actor;
    AuditLog& audit;
    const std::filesystem::path& home;
    Notices* notices;

    void record(const AuditLog::Details& details, std::string_view outcome, const std::string& reason) const
    {
        audit.log(actor, tool.id, std::nullopt, details, outcome, reason);
    }
    AuditLog::Details argsAnd(std::string_view key, std::string value) const
    {
        AuditLog::Details details = args;
        details.insert_or_assign(std::string(key), std::move(value));
        return details;
    }
};

Result deny(const Call& call, const ActionPolicy::Outcome& verdict)
{
    call.record(call.args, "denied", verdict.reason);
    return Error{"blocked by deny-rule (" + verdict.ruleID.value_or("?") + ")"};
}

std::string summary(const Tool& tool, const Args& args)
{
    std::vector<std::string> parts;
    for (const auto& [key, value] : args)
        parts.push_back(key + "=" + value);
    std::sort(parts.begin(), parts.end());
    return tool.id + " " + Text::join(parts, " ");
}

std::optional<std::string> preview(const Tool& tool, const Args& args)
{
    std::optional<std::string> line;
    if (tool.preview)
        (void)failureOf([&] { line = tool.preview(args); }); // a card without a preview is still a card
    return line;
}

Result ask(
    const Call& call, const ActionPolicy::Outcome& verdict, AutonomyMode mode, const std::filesystem::path& configDir)
{
    PendingAction action;
    const auto save = [&] {
        const PendingStore store(configDir);
        const Args args = call.tool.whileItWaits ? call.tool.whileItWaits(call.args) : call.args;
        action = {Text::newShortId(), call.tool.id, args, summary(call.tool, args), {}, preview(call.tool, args)};
        action.createdAt = Timestamps::now();
        store.save(action);
    };
    if (const auto failure = failureOf(save, kUnnamedFailure))
        return Error{"could not save pending: " + *failure};
    const bool bySlider = verdict.reason == "policy_" + std::string(rawValue(mode));
    call.record(action.preview ? call.argsAnd("impact", *action.preview) : call.args, "pending_approval",
        bySlider ? "needs_approval" : verdict.reason);
    return Pending{std::move(action.id), std::move(action.preview)};
}

bool deservesRow(const Tool& tool, const std::string& output)
{
    bool deserves = true;
    if (tool.auditAutoRun)
        (void)failureOf([&] { deserves = tool.auditAutoRun(output); }); // in doubt, on record
    return deserves;
}

/// What running a tool came to. Adds what the answer leaves out to `notices`, where there is one.
Execution execute(const Tool& tool, const Args& args, Notices* notices);

Result runNow(const Call& call, const ActionPolicy::Outcome& verdict)
{
    RunningAct running(call.home, call.tool, call.args, call.actor, verdict.reason);
    Execution execution = execute(call.tool, call.args, call.notices);
    running.ending();
    if (!execution.ok) {
        call.record(call.args, "error", execution.error);
        return Error{std::move(execution.error)};
    }
    if (deservesRow(call.tool, execution.output)) {
        const std::string result = HarnessRunner::truncate(execution.output, HarnessRunner::kAuditTextLimit);
        call.record(call.argsAnd("result", result), "executed", verdict.reason);
    }
    return Executed{std::move(execution.output)};
}

Result act(const Call& call, const Explanation& found)
{
    RunningActs::recordEnded(call.home, call.audit);
    switch (found.outcome.decision) {
    case ActionPolicy::Decision::deny:
        return deny(call, found.outcome);
    case ActionPolicy::Decision::ask:
        return ask(call, found.outcome, found.mode, call.home);
    case ActionPolicy::Decision::automatic:
        return runNow(call, found.outcome);
    }
    return Error{std::string(kUnnamedFailure)};
}

/// The raw output of a tool. Throws what its closures throw, or ServiceError with the script's error line.
std::string output(const Tool& tool, const Args& args)
{
    if (tool.nativeRun)
        return tool.nativeRun(args);
    const Invocation invocation = tool.build(args);
    OSAScript::Result result = OSAScript::run(invocation.script, invocation.argv);
    if (!result.ok)
        throw ServiceError(Remarks::explained(result.error, tool, args));
    return std::move(result.output);
}

Execution execute(const Tool& tool, const Args& args, Notices* notices)
{
    if (const char* ended = platform::Stop::reason())
        return {.error = std::string(ended) + " before it ran"};
    Execution execution;
    const auto run = [&] {
        std::string raw = output(tool, args);
        if (notices != nullptr)
            std::ranges::move(Remarks::after(tool, args, raw), std::back_inserter(notices->remarks));
        execution.output = tool.transform ? tool.transform(raw) : std::move(raw);
    };
    if (const auto failure = failureOf(run, kUnnamedFailure))
        return {.error = reasonOf(*failure)};
    execution.ok = true;
    return execution;
}

} // namespace

HarnessRunner::Stores HarnessRunner::Stores::shared() noexcept
{
    return {RuleStore::shared(), AuditLog::shared()};
}

HarnessRunner::Result HarnessRunner::run(const Tool& tool, const Args& args, std::string_view actor,
    const std::filesystem::path& configDir, Stores stores, Notices* notices)
{
    if (notices != nullptr) {
        for (Remark& remark : Remarks::of(tool, args))
            notices->remarks.push_back(std::move(remark.sentence));
    }
    const StoreFailures::Scope failures;
    Explanation found = judge(tool, args, stores);
    Result result = found.refusal ? Error{*std::move(found.refusal)}
                                  : act({tool, args, actor, stores.audit, configDir, notices}, found);
    if (notices != nullptr)
        notices->warnings = failures.sentences();
    return result;
}

HarnessRunner::Execution HarnessRunner::executeBuilt(const Tool& tool, const Args& args)
{
    return execute(tool, args, nullptr);
}

std::string HarnessRunner::truncate(std::string_view text, std::size_t limit)
{
    return Text::cut(Text::trimmed(platform::withValidUtf8(text)), limit);
}

HarnessRunner::Explanation HarnessRunner::explain(const Tool& tool, const Args& args)
{
    RuleStore rules(StoreDatabase::ofHomeIfAny());
    AuditLog audit(StoreDatabase::ofHomeIfAny());
    Explanation found = judge(tool, args, {rules, audit});
    found.remarks = Remarks::of(tool, args);
    // A deny rule also keeps a call from counting what it must not touch.
    if (!found.refusal && found.outcome.decision != ActionPolicy::Decision::deny)
        found.preview = preview(tool, args);
    return found;
}

} // namespace mervo
