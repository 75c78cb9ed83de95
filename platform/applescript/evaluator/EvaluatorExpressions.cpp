#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/References.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"

#include <cmath>
#include <ctime>

namespace mervo::applescript {

namespace {

/// Beyond it a date has no calendar any more.
constexpr double kFarthestDate = 1e15;

bool isOrder(BinaryOp op) noexcept
{
    return op == BinaryOp::less || op == BinaryOp::greater || op == BinaryOp::lessOrEqual
        || op == BinaryOp::greaterOrEqual;
}

template <typename T>
bool isOrdered(BinaryOp op, const T& left, const T& right)
{
    switch (op) {
    case BinaryOp::less:
        return left < right;
    case BinaryOp::greater:
        return left > right;
    case BinaryOp::lessOrEqual:
        return left <= right;
    default:
        return left >= right;
    }
}

[[noreturn]] void failDivision(const Value& dividend, bool isReal)
{
    throw ScriptError(ErrorNumber::divideByZero,
        "Can’t divide " + (isReal ? realText(dividend.asNumber()) : displayForm(dividend)) + " by zero.");
}

double wholeQuotient(double left, double right)
{
    return std::trunc(left / right);
}

bool itemsMatch(const List& whole, const List& part, std::size_t at, const TextRules& rules)
{
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (!areEqual(whole[at + i], part[i], rules))
            return false;
    }
    return true;
}

} // namespace

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
        return coerce(operand(*as<Cast>(expr).operand), as<Cast>(expr).target, joiner());
    case ExprKind::element:
        if (Value item = fastItem(as<ElementExpr>(expr)); !item.is(Kind::none))
            return item;
        return fetched(find(expr));
    case ExprKind::property:
    case ExprKind::filter:
        return fetched(find(expr));
    case ExprKind::target:
        switch (as<TargetExpr>(expr).which) {
        case TargetExpr::Which::it:
            return frame_->it;
        case TargetExpr::Which::me:
            return Value::script();
        case TargetExpr::Which::language:
            return Value::language();
        case TargetExpr::Which::result:
            if (frame_->result.is(Kind::none))
                throw ScriptError(ErrorNumber::undefinedVariable, "The variable result is not defined.");
            return frame_->result;
        }
        break;
    case ExprKind::referenceTo:
        return referenceTo(as<ReferenceTo>(expr));
    case ExprKind::call:
        return frame_->filter ? onceForAll(expr) : call(as<CallExpr>(expr));
    case ExprKind::command:
        return frame_->filter ? onceForAll(expr) : command(as<CommandExpr>(expr));
    case ExprKind::application: {
        const auto& application = as<ApplicationExpr>(expr);
        const Value name = operand(*application.name);
        if (!application.isById)
            return Value::application(toText(name)->view());
        if (auto* entry = registry_.findByBundleId(toText(name)->view()))
            return Value::application(entry->names.front());
        throw ScriptError::noSuchObject("application id " + quoted(name));
    }
    case ExprKind::insertion:
        return fetched(find(*as<InsertionExpr>(expr).container));
    case ExprKind::file:
        return Value::file(toPath(operand(*as<FileExpr>(expr).path)));
    case ExprKind::date: {
        const Value text = operand(*as<DateExpr>(expr).text);
        try {
            return Value::date(toDate(text));
        } catch (const ScriptError&) {
            throw ScriptError(ErrorNumber::invalidDate, "Invalid date and time date " + quoted(text) + ".", text);
        }
    }
    }
    return {};
}

const Value& Evaluator::variable(const VariableUse& use, Place place)
{
    const Value& value = slot(use);
    if (!value.is(Kind::none))
        return value;
    ScriptError error(ErrorNumber::undefinedVariable, "The variable " + use.name.spelling() + " is not defined.");
    error.isPlaced = true;
    error.place = place;
    throw error;
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
    if (expr.op == Unary::Op::logicalNot)
        return Value::boolean(!condition(*expr.operand));
    const Value value = toNumber(operand(*expr.operand));
    if (expr.op == Unary::Op::plus)
        return value;
    return value.is(Kind::integer) ? Value::integer(-value.asInteger()) : Value::real(-value.asReal());
}

Value Evaluator::evaluateBinary(const Binary& expr)
{
    const BinaryOp op = expr.op;
    // Equality alone compares references themselves.
    if (op == BinaryOp::equal || op == BinaryOp::notEqual) {
        const Value left = evaluate(*expr.left);
        const Value right = evaluate(*expr.right);
        return Value::boolean(areEqual(left, right, rules_) == (op == BinaryOp::equal));
    }
    const Value left = operand(*expr.left);
    const Value right = operand(*expr.right);
    switch (op) {
    case BinaryOp::contains:
        return Value::boolean(holds(left, right));
    case BinaryOp::notContains:
        return Value::boolean(!holds(left, right));
    case BinaryOp::isIn:
        return Value::boolean(holds(right, left));
    case BinaryOp::isNotIn:
        return Value::boolean(!holds(right, left));
    case BinaryOp::startsWith:
        return Value::boolean(holdsAtEdge(left, right, true));
    case BinaryOp::notStartsWith:
        return Value::boolean(!holdsAtEdge(left, right, true));
    case BinaryOp::endsWith:
        return Value::boolean(holdsAtEdge(left, right, false));
    case BinaryOp::notEndsWith:
        return Value::boolean(!holdsAtEdge(left, right, false));
    default:
        break;
    }
    if (isOrder(op))
        return Value::boolean(compare(op, left, right));
    if (left.is(Kind::date))
        return dateArithmetic(op, left, right);
    return arithmetic(op, left, right);
}

Value Evaluator::arithmetic(BinaryOp op, const Value& leftValue, const Value& rightValue)
{
    const Value left = leftValue.isNumber() ? leftValue : toNumber(leftValue);
    const Value right = rightValue.isNumber() ? rightValue : toNumber(rightValue);
    const bool isWhole = left.is(Kind::integer) && right.is(Kind::integer);
    const double a = left.asNumber();
    const double b = right.asNumber();
    switch (op) {
    case BinaryOp::add:
        return isWhole ? Value::integer(left.asInteger() + right.asInteger()) : Value::real(a + b);
    case BinaryOp::subtract:
        return isWhole ? Value::integer(left.asInteger() - right.asInteger()) : Value::real(a - b);
    case BinaryOp::multiply:
        return isWhole ? Value::integer(left.asInteger() * right.asInteger()) : Value::real(a * b);
    case BinaryOp::divide:
        if (b == 0)
            failDivision(left, true);
        return Value::real(a / b);
    case BinaryOp::integerDivide: {
        if (b == 0)
            failDivision(left, false);
        if (isWhole)
            return Value::integer(left.asInteger() / right.asInteger());
        const double quotient = wholeQuotient(a, b);
        return std::fabs(quotient) < 1e15 ? Value::integer(static_cast<std::int64_t>(quotient)) : Value::real(quotient);
    }
    case BinaryOp::modulo:
        if (b == 0)
            failDivision(left, false);
        return isWhole ? Value::integer(left.asInteger() % right.asInteger()) : Value::real(std::fmod(a, b));
    default:
        return Value::real(std::pow(a, b));
    }
}

/// date + seconds, date - seconds, date - date
Value Evaluator::dateArithmetic(BinaryOp op, const Value& left, const Value& right)
{
    if (op == BinaryOp::subtract && right.is(Kind::date))
        return Value::integer(left.asDate().seconds - right.asDate().seconds);
    if (op != BinaryOp::add && op != BinaryOp::subtract)
        throw ScriptError::cannotCoerce(left, "number");
    const double seconds = std::nearbyint(toNumber(right).asNumber()) * (op == BinaryOp::add ? 1 : -1);
    const double result = static_cast<double>(left.asDate().seconds) + seconds;
    if (!(std::fabs(result) < kFarthestDate))
        throw ScriptError::cannotCoerce(right, "integer");
    return Value::date({static_cast<std::int64_t>(result)});
}

/// The right operand becomes what the left one is.
bool Evaluator::compare(BinaryOp op, const Value& left, const Value& right)
{
    if (left.isNumber())
        return isOrdered(op, left.asNumber(), right.isNumber() ? right.asNumber() : toNumber(right).asNumber());
    if (left.is(Kind::text))
        return isOrdered(op, order(left.asText(), *toText(right, joiner()), rules_), 0);
    if (left.is(Kind::date))
        return isOrdered(op, left.asDate(), right.is(Kind::date) ? right.asDate() : toDate(right));
    throw ScriptError::cannotCoerce(left, "number");
}

bool Evaluator::holds(const Value& whole, const Value& part)
{
    if (whole.is(Kind::text))
        return contains(whole.asText(), *toText(part, joiner()), rules_);
    if (whole.is(Kind::record) && part.is(Kind::record)) {
        for (const Record::Field& field : part.asRecord().fields()) {
            const Value* value = whole.asRecord().find(field.label);
            if (!value || !areEqual(*value, field.value, rules_))
                return false;
        }
        return true;
    }
    const Value list = whole.is(Kind::list) ? whole : Value::list(std::vector<Value>{whole});
    const Value run = part.is(Kind::list) ? part : Value::list(std::vector<Value>{part});
    for (std::size_t i = 0; i + run.asList().size() <= list.asList().size(); ++i) {
        if (itemsMatch(list.asList(), run.asList(), i, rules_))
            return true;
    }
    return false;
}

bool Evaluator::holdsAtEdge(const Value& whole, const Value& part, bool atStart)
{
    if (whole.is(Kind::text)) {
        const Ref<Text> text = toText(part, joiner());
        return atStart ? startsWith(whole.asText(), *text, rules_) : endsWith(whole.asText(), *text, rules_);
    }
    const Value list = whole.is(Kind::list) ? whole : Value::list(std::vector<Value>{whole});
    const Value run = part.is(Kind::list) ? part : Value::list(std::vector<Value>{part});
    const std::size_t size = list.asList().size();
    const std::size_t length = run.asList().size();
    return length <= size && itemsMatch(list.asList(), run.asList(), atStart ? 0 : size - length, rules_);
}

const std::string& Evaluator::joiner()
{
    return joiner_;
}

Value Evaluator::evaluateConcat(const Concat& expr)
{
    Value result = operand(*expr.parts.front());
    for (std::size_t i = 1; i < expr.parts.size(); ++i)
        result = concatenated(result, operand(*expr.parts[i]), i > 1);
    return result;
}

/// Text on the left makes text, two records a record, anything else a list. `mayAppend`: a list on the left was made
/// by this chain and belongs to nobody else.
Value Evaluator::concatenated(const Value& left, const Value& right, bool mayAppend)
{
    if (left.is(Kind::text)) {
        if (right.is(Kind::text))
            return Value::text(Text::joined(Ref<Text>(&left.asText()), right.view()));
        return Value::text(Text::joined(Ref<Text>(&left.asText()), toText(right, joiner())->view()));
    }
    if (left.is(Kind::record) && right.is(Kind::record)) {
        auto record = makeRef<Record>();
        for (const Record::Field& field : left.asRecord().fields())
            record->set(field.label, field.value);
        for (const Record::Field& field : right.asRecord().fields())
            record->addMissing(field.label, field.value);
        return Value::record(record);
    }
    if (!left.is(Kind::list) && left.is(Kind::none))
        throw ScriptError(ErrorNumber::undefinedVariable, "The command before “&” gave no result.");
    Ref<List> list;
    if (mayAppend && left.is(Kind::list)) {
        list = Ref<List>(&left.asList());
    } else {
        list = makeRef<List>();
        if (!left.is(Kind::list)) {
            list->append(left);
        } else {
            list->reserve(left.asList().size() + (right.is(Kind::list) ? right.asList().size() : 1));
            for (const Value& item : left.asList().items())
                list->append(item);
        }
    }
    if (!right.is(Kind::list)) {
        list->append(right);
    } else {
        const std::size_t count = right.asList().size(); // may be the same list
        for (std::size_t i = 0; i < count; ++i)
            list->append(Value(right.asList()[i]));
    }
    return Value::list(list);
}

Value Evaluator::referenceTo(const ReferenceTo& expr)
{
    const Expr& what = *expr.what;
    if (what.kind == ExprKind::variable) {
        const VariableUse& use = as<Variable>(what).use;
        return use.isGlobal ? Value::reference(makeRef<VariableReference>(*this, use)) : variable(use, what.place);
    }
    if (what.kind == ExprKind::property) {
        Value owner = fetched(container(as<PropertyExpr>(what).container));
        return Value::reference(makeRef<PartReference>(*this, what, std::move(owner), Value(), Value()));
    }
    if (what.kind == ExprKind::element) {
        const auto& element = as<ElementExpr>(what);
        Value owner = fetched(container(element.container));
        Keys keys = keysOf(element);
        return Value::reference(
            makeRef<PartReference>(*this, what, std::move(owner), std::move(keys.first), std::move(keys.last)));
    }
    return evaluate(what);
}

Value ItemReference::fetch() const
{
    if (index_ >= list_.asList().size())
        throw ScriptError::noSuchObject(specifier());
    return list_.asList()[index_];
}

void ItemReference::store(Value value) const
{
    if (index_ >= list_.asList().size())
        throw ScriptError::noSuchObject(specifier());
    list_.asList().replace(index_, std::move(value));
}

std::string ItemReference::specifier() const
{
    return "item " + std::to_string(index_ + 1) + " of " + quoted(list_);
}

bool ItemReference::isSame(const Reference& other) const
{
    const auto* item = dynamic_cast<const ItemReference*>(&other);
    return item && item->index_ == index_ && item->list_.isSameCell(list_);
}

Value VariableReference::fetch() const
{
    return evaluator_.variable(use_, {});
}

void VariableReference::store(Value value) const
{
    evaluator_.slot(use_) = std::move(value);
}

std::string VariableReference::specifier() const
{
    return use_.name.spelling();
}

} // namespace mervo::applescript
