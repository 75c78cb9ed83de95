#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/References.h"
#include "platform/applescript/evaluator/Restored.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/StandardErrors.h"

#include <cstdlib>

namespace mervo::applescript {

namespace {

Value charactersOf(const Text& text)
{
    auto characters = makeRef<List>();
    for (std::size_t i = 0; i < text.characterCount(); ++i) {
        const std::size_t start = text.byteOffset(i);
        characters->append(Value::text(text.view().substr(start, text.byteOffset(i + 1) - start)));
    }
    return Value::list(characters);
}

} // namespace

Evaluator::Flow Evaluator::execute(const Block& block)
{
    for (const auto& statement : block) {
        if (const Flow flow = execute(*statement); flow != Flow::normal)
            return flow;
    }
    return Flow::normal;
}

Evaluator::Flow Evaluator::execute(const Statement& statement)
{
    Limits::step();
    try {
        return executeUnplaced(statement);
    } catch (ScriptError& error) {
        if (!error.isPlaced) {
            error.isPlaced = true;
            error.place = statement.place;
        }
        throw;
    }
}

Evaluator::Flow Evaluator::executeUnplaced(const Statement& statement)
{
    switch (statement.kind) {
    case StatementKind::expression:
        if (Value value = evaluate(*as<ExpressionStatement>(statement).expression); !value.is(Kind::none))
            frame_->result = std::move(value);
        return Flow::normal;
    case StatementKind::set: {
        const auto& set = as<SetStatement>(statement);
        Value value = evaluate(*set.value);
        if (set.isCopy)
            value = copied(value);
        assign(*set.target, value);
        frame_->result = std::move(value);
        return Flow::normal;
    }
    case StatementKind::returns: {
        const auto& returns = as<ReturnStatement>(statement);
        frame_->returned = returns.value ? evaluate(*returns.value) : Value();
        return Flow::returned;
    }
    case StatementKind::exitRepeat:
        return Flow::exitRepeat;
    case StatementKind::error:
        raise(as<ErrorStatement>(statement));
    case StatementKind::conditional:
        return executeIf(as<IfStatement>(statement));
    case StatementKind::repeat:
        return executeRepeat(as<RepeatStatement>(statement));
    case StatementKind::tell:
        return executeTell(as<TellStatement>(statement));
    case StatementKind::tries:
        return executeTry(as<TryStatement>(statement));
    case StatementKind::consider:
        return executeConsider(as<ConsiderStatement>(statement));
    case StatementKind::timeout:
        return executeTimeout(as<TimeoutStatement>(statement));
    }
    return Flow::normal;
}

Evaluator::Flow Evaluator::executeIf(const IfStatement& statement)
{
    for (const auto& [test, block] : statement.branches) {
        if (condition(*test))
            return execute(block);
    }
    return execute(statement.otherwise);
}

/// One round; false when the loop ends with it, and `flow` says how.
bool Evaluator::runRound(const RepeatStatement& statement, Flow& flow)
{
    Limits::step();
    flow = execute(statement.body);
    if (flow == Flow::normal)
        return true;
    if (flow == Flow::exitRepeat)
        flow = Flow::normal;
    return false;
}

Evaluator::Flow Evaluator::executeRepeat(const RepeatStatement& statement)
{
    using Form = RepeatStatement::Form;
    Flow flow = Flow::normal;
    switch (statement.form) {
    case Form::range:
        return repeatRange(statement);
    case Form::list:
        return repeatList(statement);
    case Form::forever:
        while (runRound(statement, flow)) { }
        return flow;
    case Form::whileTrue:
    case Form::untilTrue:
        while (condition(*statement.first) == (statement.form == Form::whileTrue) && runRound(statement, flow)) { }
        return flow;
    case Form::times:
        for (std::int64_t left = toInteger(operand(*statement.first)); left > 0 && runRound(statement, flow); --left) {
        }
        return flow;
    }
    return flow;
}

Evaluator::Flow Evaluator::repeatRange(const RepeatStatement& statement)
{
    const Value first = toNumber(operand(*statement.first));
    const Value last = toNumber(operand(*statement.last));
    const Value step = statement.step ? toNumber(operand(*statement.step)) : Value::integer(1);
    if (step.asNumber() == 0)
        throw ScriptError(ErrorNumber::general, "A repeat can’t go on by 0.");
    Flow flow = Flow::normal;
    if (first.is(Kind::integer) && step.is(Kind::integer)) {
        const double end = last.asNumber();
        const std::int64_t by = step.asInteger();
        for (std::int64_t i = first.asInteger(); by > 0 ? static_cast<double>(i) <= end : static_cast<double>(i) >= end;
             i += by) {
            slot(statement.variable) = Value::integer(i);
            if (!runRound(statement, flow))
                break;
        }
        return flow;
    }
    const double by = step.asNumber();
    for (double i = first.asNumber(); by > 0 ? i <= last.asNumber() : i >= last.asNumber(); i += by) {
        slot(statement.variable) = Value::real(i);
        if (!runRound(statement, flow))
            break;
    }
    return flow;
}

Evaluator::Flow Evaluator::repeatList(const RepeatStatement& statement)
{
    Found found = find(*statement.first);
    Flow flow = Flow::normal;
    if (found.every && !found.range && !statement.first->isParenthesised) {
        const std::size_t rounds = countOf(found);
        for (std::size_t i = 0; i < rounds; ++i) {
            slot(statement.variable) =
                Value::reference(makeRef<ElementReference>(applications_, found.parent, *found.every, i));
            if (!runRound(statement, flow))
                break;
        }
        return flow;
    }
    Value list = dereferenced(fetched(std::move(found)));
    list = list.is(Kind::text) ? charactersOf(list.asText()) : coerce(list, TargetClass::list);
    const std::size_t rounds = list.asList().size();
    for (std::size_t i = 0; i < rounds; ++i) {
        slot(statement.variable) = Value::reference(makeRef<ItemReference>(list, i));
        if (!runRound(statement, flow))
            break;
    }
    return flow;
}

Evaluator::Flow Evaluator::executeTell(const TellStatement& statement)
{
    Value target = dereferenced(fetched(find(*statement.target)));
    if (target.is(Kind::application))
        applications_.entryOf(target); // there must be one
    const Restored<Value> it(frame_->it, std::move(target));
    const Restored<Filter*> filter(frame_->filter, nullptr);
    return execute(statement.body);
}

void Evaluator::bindError(const TryStatement& statement, const ScriptError& error)
{
    if (statement.message)
        slot(*statement.message) = Value::text(error.message);
    if (statement.number)
        slot(*statement.number) = Value::integer(error.number);
    if (statement.offender)
        slot(*statement.offender) = error.offender.is(Kind::none) ? Value::missing() : error.offender;
    if (statement.partialResult) {
        slot(*statement.partialResult) =
            error.partialResult.is(Kind::none) ? Value::list(std::vector<Value>{}) : error.partialResult;
    }
    if (statement.expectedClass)
        slot(*statement.expectedClass) = error.expectedClass.is(Kind::none) ? Value::missing() : error.expectedClass;
}

Evaluator::Flow Evaluator::executeTry(const TryStatement& statement)
{
    try {
        return execute(statement.body);
    } catch (const ScriptError& error) {
        if (!statement.hasHandler)
            return Flow::normal;
        if (statement.hasNumberLiteral && statement.onlyNumber != error.number)
            throw;
        bindError(statement, error);
    }
    // Outside of the catch clause, so that handlers that fail within handlers do not pile up errors in flight.
    return execute(statement.handler);
}

void Evaluator::raise(const ErrorStatement& statement)
{
    ScriptError error(ErrorNumber::general);
    if (statement.message)
        error.message = toString(operand(*statement.message));
    if (statement.number) {
        const std::int64_t number = toInteger(operand(*statement.number));
        if (std::abs(number) > INT32_MAX)
            throw ScriptError::cannotCoerce(Value::integer(number), "integer");
        error.number = static_cast<int>(number);
    }
    if (!statement.message)
        error.message = statement.number ? standardMessage(error.number) : "An error has occurred.";
    if (statement.offender)
        error.offender = evaluate(*statement.offender);
    if (statement.partialResult)
        error.partialResult = evaluate(*statement.partialResult);
    if (statement.expectedClass)
        error.expectedClass = evaluate(*statement.expectedClass);
    error.isFromApplication = true; // the words are the script's own
    throw error;
}

Evaluator::Flow Evaluator::executeConsider(const ConsiderStatement& statement)
{
    TextRules rules = texts_.rules;
    for (const auto& [setting, value] : statement.changes)
        rules.*setting = value;
    const Restored<TextRules> restored(texts_.rules, rules);
    return execute(statement.body);
}

Evaluator::Flow Evaluator::executeTimeout(const TimeoutStatement& statement)
{
    const Restored<std::optional<double>> restored(applications_.timeout, toReal(operand(*statement.seconds)));
    return execute(statement.body);
}

} // namespace mervo::applescript
