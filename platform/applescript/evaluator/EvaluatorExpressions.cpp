#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/Operators.h"
#include "platform/applescript/evaluator/References.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

namespace mervo::applescript {

Value Evaluator::evaluate(const Expr& expr)
{
    Limits::enter();
    switch (expr.kind) {
    case ExprKind::literal:
        return as<Literal>(expr).value;
    case ExprKind::variable:
        return variable(as<Variable>(expr).use, expr.place);
    case ExprKind::list:
        return evaluateList(as<ListExpr>(expr));
    case ExprKind::record:
        return evaluateRecord(as<RecordExpr>(expr));
    case ExprKind::unary:
        return evaluateUnary(as<Unary>(expr));
    case ExprKind::binary:
        return evaluateBinary(as<Binary>(expr));
    case ExprKind::logical: {
        const auto& logical = as<Logical>(expr);
        const bool left = condition(*logical.left);
        return Value::boolean(left == logical.isAnd ? condition(*logical.right) : left);
    }
    case ExprKind::concat:
        return evaluateConcat(as<Concat>(expr));
    case ExprKind::cast:
        return coerce(operand(*as<Cast>(expr).operand), as<Cast>(expr).target, texts_.joiner());
    case ExprKind::element:
        if (Value item = fastItem(as<ElementExpr>(expr)); !item.is(Kind::none))
            return item;
        return fetched(find(expr));
    case ExprKind::property:
    case ExprKind::filter:
        return fetched(find(expr));
    case ExprKind::target:
        return evaluateTarget(as<TargetExpr>(expr));
    case ExprKind::referenceTo:
        return referenceTo(as<ReferenceTo>(expr));
    case ExprKind::call:
        return frame_->filter ? onceForAll(expr) : call(as<CallExpr>(expr));
    case ExprKind::command:
        return frame_->filter ? onceForAll(expr) : command(as<CommandExpr>(expr));
    case ExprKind::application:
        return evaluateApplication(as<ApplicationExpr>(expr));
    case ExprKind::insertion:
        return fetched(find(*as<InsertionExpr>(expr).container));
    case ExprKind::file:
        return Value::file(toPath(operand(*as<FileExpr>(expr).path)));
    case ExprKind::date:
        return evaluateDate(as<DateExpr>(expr));
    }
    return {};
}

Value Evaluator::evaluateTarget(const TargetExpr& expr)
{
    switch (expr.which) {
    case TargetExpr::Which::it:
        return frame_->it;
    case TargetExpr::Which::me:
        return Value::script();
    case TargetExpr::Which::language:
        return Value::language();
    case TargetExpr::Which::result:
        break;
    }
    if (frame_->result.is(Kind::none))
        throw ScriptError(ErrorNumber::undefinedVariable, "The variable result is not defined.");
    return frame_->result;
}

Value Evaluator::evaluateApplication(const ApplicationExpr& expr)
{
    const Value name = operand(*expr.name);
    if (!expr.isById)
        return Value::application(toText(name)->view());
    if (const auto* entry = applications_.withBundleId(toText(name)->view()))
        return Value::application(entry->names.front());
    throw ScriptError::noSuchObject("application id " + quoted(name));
}

Value Evaluator::evaluateDate(const DateExpr& expr)
{
    const Value text = operand(*expr.text);
    try {
        return Value::date(toDate(text));
    } catch (const ScriptError&) {
        throw ScriptError(ErrorNumber::invalidDate, "Invalid date and time date " + quoted(text) + ".", text);
    }
}

const Value& Evaluator::variable(const VariableUse& use, Place place)
{
    return defined(slot(use), use.name, place);
}

bool Evaluator::condition(const Expr& expr)
{
    const Value value = evaluate(expr);
    return value.is(Kind::boolean) ? value.asBoolean() : toBoolean(value);
}

/// `item i of x`, the commonest of all references, without going the long way. None: it is something else.
Value Evaluator::fastItem(const ElementExpr& expr)
{
    if (expr.form != ElementExpr::Form::index || expr.languageClass != LanguageClass::item || !expr.container
        || expr.container->kind != ExprKind::variable)
        return {};
    const Value& owner = slot(as<Variable>(*expr.container).use);
    if (!owner.is(Kind::list))
        return {};
    const Value key = expr.key->kind == ExprKind::variable ? slot(as<Variable>(*expr.key).use)
        : expr.key->kind == ExprKind::literal              ? as<Literal>(*expr.key).value
                                                           : Value();
    const List& list = owner.asList();
    if (!key.is(Kind::integer) || key.asInteger() < 1 || static_cast<std::size_t>(key.asInteger()) > list.size())
        return {};
    return list[static_cast<std::size_t>(key.asInteger()) - 1];
}

Value Evaluator::evaluateList(const ListExpr& expr)
{
    auto list = makeRef<List>();
    list->reserve(expr.items.size());
    for (const ExprPtr& item : expr.items) {
        Value value = evaluate(*item);
        list->append(value.is(Kind::none) ? Value::missing() : std::move(value));
    }
    return Value::list(list);
}

Value Evaluator::evaluateRecord(const RecordExpr& expr)
{
    auto record = makeRef<Record>();
    for (const auto& [label, value] : expr.fields)
        record->set(label, evaluate(*value));
    return Value::record(record);
}

Value Evaluator::evaluateUnary(const Unary& expr)
{
    switch (expr.op) {
    case Unary::Op::logicalNot:
        return Value::boolean(!condition(*expr.operand));
    case Unary::Op::plus:
        return toNumber(operand(*expr.operand));
    case Unary::Op::negate:
        break;
    }
    return negated(operand(*expr.operand));
}

Value Evaluator::evaluateBinary(const Binary& expr)
{
    // Equality alone compares references themselves.
    if (expr.op == BinaryOp::equal || expr.op == BinaryOp::notEqual) {
        const Value left = evaluate(*expr.left);
        const Value right = evaluate(*expr.right);
        return Value::boolean(areEqual(left, right, texts_.rules) == (expr.op == BinaryOp::equal));
    }
    const Value left = operand(*expr.left);
    const Value right = operand(*expr.right);
    return applied(expr.op, left, right, texts_);
}

Value Evaluator::evaluateConcat(const Concat& expr)
{
    Value result = operand(*expr.parts.front());
    LeftOperand who = LeftOperand::shared;
    for (std::size_t i = 1; i < expr.parts.size(); ++i) {
        result = concatenated(result, operand(*expr.parts[i]), texts_.joiner(), who);
        who = LeftOperand::madeHere;
    }
    return result;
}

Value Evaluator::referenceTo(const ReferenceTo& expr)
{
    const Expr& what = *expr.what;
    if (what.kind == ExprKind::variable) {
        const VariableUse& use = as<Variable>(what).use;
        return use.isGlobal ? Value::reference(makeRef<VariableReference>(slot(use), use.name))
                            : variable(use, what.place);
    }
    if (what.kind == ExprKind::property || what.kind == ExprKind::element)
        return referenceToPart(what);
    return evaluate(what);
}

} // namespace mervo::applescript
