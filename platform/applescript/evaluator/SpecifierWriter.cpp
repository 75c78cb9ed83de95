#include "platform/applescript/evaluator/SpecifierWriter.h"

#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Object.h"

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

std::string ofPlace(const std::string& part, const std::string& place)
{
    return place.empty() ? part : part + " of " + place;
}

} // namespace

SpecifierWriter::SpecifierWriter(const std::string& source, ValueOf valueOf, KeysOf keysOf)
    : source_(source)
    , valueOf_(std::move(valueOf))
    , keysOf_(std::move(keysOf))
{
}

std::string SpecifierWriter::part(const ElementExpr& expr, const Keys& keys) const
{
    using Form = ElementExpr::Form;
    const std::string& name = expr.className.spelling();
    const auto bound = [&](const ExprPtr& written, const Value& value) {
        if (!written || written->kind != ExprKind::element || !as<ElementExpr>(*written).key)
            return quoted(value);
        const auto& mark = as<ElementExpr>(*written);
        return mark.className.spelling() + " " + chain(*mark.key);
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
std::string SpecifierWriter::chain(const Expr& expr) const
{
    const auto withOwner = [&](const std::string& name, const ExprPtr& owner) {
        return ofPlace(name, owner ? chain(*owner) : std::string());
    };
    switch (expr.kind) {
    case ExprKind::literal:
        return quoted(as<Literal>(expr).value);
    case ExprKind::variable: {
        const Value value = valueOf_(as<Variable>(expr).use);
        return value.is(Kind::none) ? as<Variable>(expr).use.name.spelling() : quoted(value);
    }
    case ExprKind::property:
        return withOwner(as<PropertyExpr>(expr).name.spelling(), as<PropertyExpr>(expr).container);
    case ExprKind::element: {
        const auto& element = as<ElementExpr>(expr);
        return withOwner(part(element, keysOf_(element)), element.container);
    }
    case ExprKind::target:
        return as<TargetExpr>(expr).which == TargetExpr::Which::it ? std::string("it") : std::string("me");
    default:
        return {};
    }
}

/// What a part belongs to, as written where it is a reference to an application's objects; else its value. Empty for
/// the application itself.
std::string SpecifierWriter::ownerOf(const ExprPtr& expr, const Value& owner) const
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
            const std::string name = part(element, keysOf_(element));
            const Ref<Object> parent = owner.asObject().designation().container;
            return ofPlace(name, parent ? ownerOf(element.container, Value::object(parent)) : std::string());
        }
    }
    return specifierOf(owner.asObject());
}

std::string SpecifierWriter::whole(const PropertyExpr& expr, const Value& owner) const
{
    return ofPlace(expr.name.spelling(), ownerOf(expr.container, owner));
}

std::string SpecifierWriter::whole(const ElementExpr& expr, const Keys& keys, const Value& owner) const
{
    const std::string name = part(expr, keys);
    return ofPlace(name, ownerOf(expr.container, owner));
}

std::string SpecifierWriter::whole(const FilterExpr& expr, const Keys& keys, const Value& owner) const
{
    const std::string elements = whole(*expr.element, keys, owner);
    return elements + " whose " + condition(*expr.condition);
}

/// The test of a filter with symbols: `name = "Nope"`.
std::string SpecifierWriter::condition(const Expr& expr) const
{
    switch (expr.kind) {
    case ExprKind::binary: {
        const auto& binary = as<Binary>(expr);
        return condition(*binary.left) + " " + symbolOf(binary.op) + " " + condition(*binary.right);
    }
    case ExprKind::logical: {
        const auto& logical = as<Logical>(expr);
        return condition(*logical.left) + (logical.isAnd ? " and " : " or ") + condition(*logical.right);
    }
    case ExprKind::unary: {
        const auto& unary = as<Unary>(expr);
        const char* sign = unary.op == Unary::Op::logicalNot ? "not " : unary.op == Unary::Op::negate ? "-" : "";
        return sign + condition(*unary.operand);
    }
    default:
        break;
    }
    const std::string written = chain(expr);
    return written.empty() ? source_.substr(expr.place.start, expr.place.end - expr.place.start) : written;
}

} // namespace mervo::applescript
