#include "platform/applescript/evaluator/FilterCondition.h"

#include <algorithm>

namespace mervo::applescript {

namespace {

bool dependsOnCandidate(const ExprPtr& expr)
{
    return expr && dependsOnCandidate(*expr);
}

template <typename Expressions>
bool anyDependsOnCandidate(const Expressions& expressions)
{
    return std::any_of(
        expressions.begin(), expressions.end(), [](const ExprPtr& expr) { return dependsOnCandidate(expr); });
}

} // namespace

bool dependsOnCandidate(const Expr& expr)
{
    switch (expr.kind) {
    case ExprKind::literal:
    case ExprKind::variable:
        return false;
    case ExprKind::list:
        return anyDependsOnCandidate(as<ListExpr>(expr).items);
    case ExprKind::unary:
        return dependsOnCandidate(as<Unary>(expr).operand);
    case ExprKind::binary:
        return dependsOnCandidate(as<Binary>(expr).left) || dependsOnCandidate(as<Binary>(expr).right);
    case ExprKind::concat:
        return anyDependsOnCandidate(as<Concat>(expr).parts);
    case ExprKind::cast:
        return dependsOnCandidate(as<Cast>(expr).operand);
    case ExprKind::property:
        return !as<PropertyExpr>(expr).container || dependsOnCandidate(as<PropertyExpr>(expr).container);
    case ExprKind::element: {
        const auto& element = as<ElementExpr>(expr);
        return !element.container || dependsOnCandidate(element.container) || dependsOnCandidate(element.key)
            || dependsOnCandidate(element.lastKey);
    }
    case ExprKind::target:
        return as<TargetExpr>(expr).which == TargetExpr::Which::it;
    case ExprKind::call: {
        const auto& call = as<CallExpr>(expr);
        return !call.isMine || anyDependsOnCandidate(call.arguments);
    }
    case ExprKind::command:
        return as<CommandExpr>(expr).command != LanguageCommand::currentDate;
    default:
        return true;
    }
}

} // namespace mervo::applescript
