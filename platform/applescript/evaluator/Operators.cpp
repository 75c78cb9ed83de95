#include "platform/applescript/evaluator/Operators.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/List.h"

#include <cmath>

namespace mervo::applescript {

namespace {

/// Beyond it a date has no calendar any more.
constexpr double kFarthestDate = 1e15;

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

[[noreturn]] void failDivision(const std::string& dividend)
{
    throw ScriptError(ErrorNumber::divideByZero, "Can’t divide " + dividend + " by zero.");
}

bool itemsMatch(const List& whole, const List& part, std::size_t at, const TextRules& rules)
{
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (!areEqual(whole[at + i], part[i], rules))
            return false;
    }
    return true;
}

Value asList(const Value& value)
{
    return value.is(Kind::list) ? value : Value::list(std::vector<Value>{value});
}

/// A new list of the value, or of its items where it is a list, with room for more.
Ref<List> listOf(const Value& value, std::size_t more)
{
    auto list = makeRef<List>();
    if (!value.is(Kind::list)) {
        list->append(value);
        return list;
    }
    list->reserve(value.asList().size() + more);
    for (const Value& item : value.asList().items())
        list->append(item);
    return list;
}

/// Of two numbers.
Value arithmetic(BinaryOp op, const Value& left, const Value& right)
{
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
            failDivision(realText(a));
        return Value::real(a / b);
    case BinaryOp::integerDivide: {
        if (b == 0)
            failDivision(displayForm(left));
        if (isWhole)
            return Value::integer(left.asInteger() / right.asInteger());
        const double quotient = std::trunc(a / b);
        return std::fabs(quotient) < 1e15 ? Value::integer(static_cast<std::int64_t>(quotient)) : Value::real(quotient);
    }
    case BinaryOp::modulo:
        if (b == 0)
            failDivision(displayForm(left));
        return isWhole ? Value::integer(left.asInteger() % right.asInteger()) : Value::real(std::fmod(a, b));
    default:
        return Value::real(std::pow(a, b));
    }
}

/// date + seconds, date - seconds, date - date
Value dateArithmetic(BinaryOp op, const Value& left, const Value& right)
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

bool compare(BinaryOp op, const Value& left, const Value& right, const TextSettings& texts)
{
    if (left.isNumber())
        return isOrdered(op, left.asNumber(), right.isNumber() ? right.asNumber() : toNumber(right).asNumber());
    if (left.is(Kind::text))
        return isOrdered(op, order(left.asText(), *toText(right, texts.joiner()), texts.rules), 0);
    if (left.is(Kind::date))
        return isOrdered(op, left.asDate(), right.is(Kind::date) ? right.asDate() : toDate(right));
    throw ScriptError::cannotCoerce(left, "number");
}

bool holds(const Value& whole, const Value& part, const TextSettings& texts)
{
    if (whole.is(Kind::text))
        return contains(whole.asText(), *toText(part, texts.joiner()), texts.rules);
    if (whole.is(Kind::record) && part.is(Kind::record)) {
        for (const Record::Field& field : part.asRecord().fields()) {
            const Value* value = whole.asRecord().find(field.label);
            if (!value || !areEqual(*value, field.value, texts.rules))
                return false;
        }
        return true;
    }
    const Value list = asList(whole);
    const Value run = asList(part);
    for (std::size_t i = 0; i + run.asList().size() <= list.asList().size(); ++i) {
        if (itemsMatch(list.asList(), run.asList(), i, texts.rules))
            return true;
    }
    return false;
}

enum class Edge { start, end };

bool holdsAt(Edge edge, const Value& whole, const Value& part, const TextSettings& texts)
{
    if (whole.is(Kind::text)) {
        const Ref<Text> text = toText(part, texts.joiner());
        return edge == Edge::start ? startsWith(whole.asText(), *text, texts.rules)
                                   : endsWith(whole.asText(), *text, texts.rules);
    }
    const Value list = asList(whole);
    const Value run = asList(part);
    const std::size_t size = list.asList().size();
    const std::size_t length = run.asList().size();
    return length <= size
        && itemsMatch(list.asList(), run.asList(), edge == Edge::start ? 0 : size - length, texts.rules);
}

} // namespace

Value applied(BinaryOp op, const Value& left, const Value& right, const TextSettings& texts)
{
    switch (op) {
    case BinaryOp::contains:
        return Value::boolean(holds(left, right, texts));
    case BinaryOp::notContains:
        return Value::boolean(!holds(left, right, texts));
    case BinaryOp::isIn:
        return Value::boolean(holds(right, left, texts));
    case BinaryOp::isNotIn:
        return Value::boolean(!holds(right, left, texts));
    case BinaryOp::startsWith:
        return Value::boolean(holdsAt(Edge::start, left, right, texts));
    case BinaryOp::notStartsWith:
        return Value::boolean(!holdsAt(Edge::start, left, right, texts));
    case BinaryOp::endsWith:
        return Value::boolean(holdsAt(Edge::end, left, right, texts));
    case BinaryOp::notEndsWith:
        return Value::boolean(!holdsAt(Edge::end, left, right, texts));
    case BinaryOp::less:
    case BinaryOp::greater:
    case BinaryOp::lessOrEqual:
    case BinaryOp::greaterOrEqual:
        return Value::boolean(compare(op, left, right, texts));
    default:
        break;
    }
    if (left.isNumber() && right.isNumber())
        return arithmetic(op, left, right);
    if (left.is(Kind::date))
        return dateArithmetic(op, left, right);
    const Value number = toNumber(left); // fails before the right operand does
    return arithmetic(op, number, toNumber(right));
}

Value negated(const Value& value)
{
    const Value number = toNumber(value);
    return number.is(Kind::integer) ? Value::integer(-number.asInteger()) : Value::real(-number.asReal());
}

Value concatenated(const Value& left, const Value& right, std::string_view joiner, LeftOperand who)
{
    if (left.is(Kind::text)) {
        const Ref<Text> text(&left.asText());
        return Value::text(Text::joined(text, right.is(Kind::text) ? right.view() : toText(right, joiner)->view()));
    }
    if (left.is(Kind::record) && right.is(Kind::record)) {
        auto record = makeRef<Record>();
        for (const Record::Field& field : left.asRecord().fields())
            record->set(field.label, field.value);
        for (const Record::Field& field : right.asRecord().fields())
            record->addMissing(field.label, field.value);
        return Value::record(record);
    }
    if (left.is(Kind::none))
        throw ScriptError(ErrorNumber::undefinedVariable, "The command before “&” gave no result.");
    const std::size_t added = right.is(Kind::list) ? right.asList().size() : 1; // may be the same list
    const Ref<List> list =
        who == LeftOperand::madeHere && left.is(Kind::list) ? Ref<List>(&left.asList()) : listOf(left, added);
    if (!right.is(Kind::list)) {
        list->append(right);
    } else {
        for (std::size_t i = 0; i < added; ++i)
            list->append(Value(right.asList()[i]));
    }
    return Value::list(list);
}

} // namespace mervo::applescript
