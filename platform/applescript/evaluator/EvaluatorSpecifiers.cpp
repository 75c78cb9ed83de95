#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Display.h"

namespace mervo::applescript {

namespace {

const char* symbolOf(BinaryOp op)
{
    switch (op) {
    case BinaryOp::add:
        return "+";
    case BinaryOp::subtract:
        return "-";
    case BinaryOp::multiply:
        return "*";
    case BinaryOp::divide:
        return "/";
    case BinaryOp::integerDivide:
        return "div";
    case BinaryOp::modulo:
        return "mod";
    case BinaryOp::power:
        return "^";
    case BinaryOp::equal:
        return "=";
    case BinaryOp::notEqual:
        return "≠";
    case BinaryOp::less:
        return "<";
    case BinaryOp::greater:
        return ">";
    case BinaryOp::lessOrEqual:
        return "≤";
    case BinaryOp::greaterOrEqual:
        return "≥";
    case BinaryOp::contains:
        return "contains";
    case BinaryOp::notContains:
        return "does not contain";
    case BinaryOp::isIn:
        return "is in";
    case BinaryOp::isNotIn:
        return "is not in";
    case BinaryOp::startsWith:
        return "starts with";
    case BinaryOp::notStartsWith:
        return "does not start with";
    case BinaryOp::endsWith:
        return "ends with";
    case BinaryOp::notEndsWith:
        return "does not end with";
    }
    return "";
}

bool isApplication(const Value& value)
{
    return value.is(Kind::application)
        || (value.is(Kind::object) && value.asObject().designation().form == Designation::Form::application);
}

} // namespace

/// The part alone: `item 5`, `text 1 thru 9`, `mailbox "X"`.
std::string Evaluator::describePart(const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    const std::string& name = expr.className.spelling();
    const auto bound = [&](const ExprPtr& written, const Value& value) {
        if (!written || written->kind != ExprKind::element)
            return quoted(value);
        const auto& mark = as<ElementExpr>(*written);
        return mark.className.spelling() + " " + describeChain(*mark.key);
    };
    switch (expr.form) {
    case Form::every:
        return "every " + name;
    case Form::index:
        return name + " " + quoted(keys.first);
    case Form::id:
        return name + " id " + quoted(keys.first);
    case Form::middle:
        return "middle " + name;
    case Form::some:
        return "some " + name;
    case Form::range:
        break;
    }
    const bool isCut = expr.languageClass == LanguageClass::text;
    return name + (isCut ? " " : "s ") + bound(expr.key, keys.first) + " thru " + bound(expr.lastKey, keys.last);
}

/// A reference as it was written, its keys as values: `mailbox "X" of account "A"`. Empty for what is no reference.
std::string Evaluator::describeChain(const Expr& expr)
{
    const auto withOwner = [&](std::string part, const ExprPtr& owner) {
        const std::string place = owner ? describeChain(*owner) : std::string();
        return place.empty() ? part : part + " of " + place;
    };
    switch (expr.kind) {
    case ExprKind::literal:
        return quoted(as<Literal>(expr).value);
    case ExprKind::variable: {
        const Value& value = slot(as<Variable>(expr).use);
        return value.is(Kind::none) ? as<Variable>(expr).use.name.spelling() : quoted(value);
    }
    case ExprKind::property:
        return withOwner(as<PropertyExpr>(expr).name.spelling(), as<PropertyExpr>(expr).container);
    case ExprKind::element: {
        const auto& element = as<ElementExpr>(expr);
        return withOwner(describePart(element, keysOf(element)), element.container);
    }
    case ExprKind::target:
        return as<TargetExpr>(expr).which == TargetExpr::Which::it ? std::string("it") : std::string("me");
    default:
        return {};
    }
}

/// What a part belongs to, as written where it is a reference to an application's objects; else its value. Empty for
/// the application itself.
std::string Evaluator::describeOwner(const ExprPtr& expr, const Value& owner)
{
    if (isApplication(owner) || owner.is(Kind::script))
        return {};
    if (!owner.is(Kind::object))
        return quoted(owner);
    // Keys that are variables or literals can be shown again; anything else would have to be run again.
    if (expr && expr->kind == ExprKind::element) {
        const auto& element = as<ElementExpr>(*expr);
        const bool isPlain = element.key
            && (element.key->kind == ExprKind::literal || element.key->kind == ExprKind::variable) && !element.lastKey;
        if (isPlain) {
            const std::string part = describePart(element, keysOf(element));
            const Ref<Object> parent = owner.asObject().designation().container;
            const std::string rest = parent ? describeOwner(element.container, Value::object(parent)) : std::string();
            return rest.empty() ? part : part + " of " + rest;
        }
    }
    return specifierOf(owner.asObject());
}

std::string Evaluator::describe(const PropertyExpr& expr, const Value& owner)
{
    const std::string place = describeOwner(expr.container, owner);
    return place.empty() ? expr.name.spelling() : expr.name.spelling() + " of " + place;
}

std::string Evaluator::describe(const ElementExpr& expr, const Keys& keys, const Value& owner)
{
    const std::string part = describePart(expr, keys);
    const std::string place = describeOwner(expr.container, owner);
    return place.empty() ? part : part + " of " + place;
}

/// The test of a filter with symbols: `name = "Nope"`.
std::string Evaluator::describeCondition(const Expr& expr)
{
    switch (expr.kind) {
    case ExprKind::binary: {
        const auto& binary = as<Binary>(expr);
        return describeCondition(*binary.left) + " " + symbolOf(binary.op) + " " + describeCondition(*binary.right);
    }
    case ExprKind::logical: {
        const auto& logical = as<Logical>(expr);
        return describeCondition(*logical.left) + (logical.isAnd ? " and " : " or ")
            + describeCondition(*logical.right);
    }
    case ExprKind::unary: {
        const auto& unary = as<Unary>(expr);
        const char* sign = unary.op == Unary::Op::logicalNot ? "not " : unary.op == Unary::Op::negate ? "-" : "";
        return sign + describeCondition(*unary.operand);
    }
    default:
        break;
    }
    const std::string chain = describeChain(expr);
    return chain.empty() ? script_.source.substr(expr.place.start, expr.place.end - expr.place.start) : chain;
}

} // namespace mervo::applescript
