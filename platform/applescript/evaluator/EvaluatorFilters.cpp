#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Limits.h"

#include <algorithm>
#include <random>

namespace mervo::applescript {

namespace {

bool dependsOnCandidate(const Expr& expr);

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

/// Whether a part of a condition can differ between candidates: it has `it` in it, or something that belongs to `it`
/// for want of a container. What is not known to be independent counts as dependent.
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

/// Puts the candidates of a filter before its condition, one after the other, and the frame back as it was.
template <typename FrameType, typename FilterType>
class Candidates {
public:
    Candidates(FrameType& frame, FilterType& filter)
        : frame_(frame)
        , it_(frame.it)
        , filter_(std::exchange(frame.filter, &filter))
    {
    }
    Candidates(const Candidates&) = delete;
    Candidates& operator=(const Candidates&) = delete;
    ~Candidates()
    {
        frame_.it = std::move(it_);
        frame_.filter = filter_;
    }

private:
    FrameType& frame_;
    Value it_;
    FilterType* filter_;
};

} // namespace

/// A property of the candidate of a filter: of all candidates in one question, at the first that asks. None: it is
/// not a property of the elements.
Value Evaluator::column(const PropertyExpr& expr)
{
    Filter& filter = *frame_->filter;
    const Dictionary& dictionary = filter.parent->application().dictionary();
    const PropertyTerm* term = expr.dictionary == &dictionary
        ? dictionary.findProperty(*filter.elementClass, expr.propertyId)
        : dictionary.findProperty(*filter.elementClass, expr.name);
    if (!term)
        return {};
    for (const auto& [id, values] : filter.columns) {
        if (id == term->id)
            return filter.index < values.asList().size() ? values.asList()[filter.index] : Value();
    }
    Value values = ask(
        filter.parent->application(), [&] { return filter.parent->propertyOfEvery(filter.elementClass->id, term->id); },
        [&] { return expr.name.spelling() + " of every " + filter.elementClass->name; });
    // Elements came or went since: then each candidate is asked by itself.
    if (values.asList().size() != filter.candidates.asList().size())
        values = Value::list(std::vector<Value>{});
    filter.columns.emplace_back(term->id, std::move(values));
    return column(expr);
}

/// A call or command in a condition: one that belongs to no candidate is made once for all of them.
Value Evaluator::onceForAll(const Expr& expr)
{
    Filter& filter = *frame_->filter;
    for (const auto& [known, value] : filter.outside) {
        if (known == &expr)
            return value;
    }
    Value value = expr.kind == ExprKind::call ? call(as<CallExpr>(expr)) : command(as<CommandExpr>(expr));
    if (!dependsOnCandidate(expr))
        filter.outside.emplace_back(&expr, value);
    return value;
}

Evaluator::Found Evaluator::findFilter(const FilterExpr& expr)
{
    Found owner = container(expr.element->container);
    if (owner.every)
        owner = {fetched(std::move(owner)), true, {}, nullptr};
    if (owner.isMany) {
        auto values = makeRef<List>();
        for (const Value& each : owner.value.asList().items()) {
            if (!each.is(Kind::object))
                failElement(ErrorNumber::noSuchObject, *expr.element, {}, each);
            values->append(filtered(Ref<Object>(&each.asObject()), expr).value);
        }
        return {Value::list(values), true, {}, nullptr};
    }
    if (owner.value.is(Kind::application))
        return filtered(rootOf(owner.value), expr);
    if (!owner.value.is(Kind::object))
        failElement(ErrorNumber::noSuchObject, *expr.element, keysOf(*expr.element), owner.value);
    return filtered(Ref<Object>(&owner.value.asObject()), expr);
}

Evaluator::Found Evaluator::filtered(const Ref<Object>& owner, const FilterExpr& expr)
{
    using Form = ElementExpr::Form;
    const ElementExpr& element = *expr.element;
    const Keys keys = keysOf(element);
    const ClassTerm* term = elementClass(*owner, element);
    if (!term)
        failElement(ErrorNumber::noSuchObject, element, keys, Value::object(owner));
    const bool isSingle = element.form != Form::every && element.form != Form::range;
    const std::int64_t wanted = element.form == Form::index ? toInteger(keys.first) : 0;
    auto matches = makeRef<List>();
    {
        Filter filter;
        filter.parent = owner;
        filter.elementClass = term;
        filter.candidates = fetched({{}, false, owner, term});
        const Candidates restored(*frame_, filter);
        for (; filter.index < filter.candidates.asList().size(); ++filter.index) {
            Limits::step();
            frame_->it = filter.candidates.asList()[filter.index];
            if (condition(*expr.condition))
                matches->append(filter.candidates.asList()[filter.index]);
            if (wanted > 0 && matches->size() == static_cast<std::size_t>(wanted))
                return {matches->items().back(), false, {}, nullptr};
        }
    }
    if (!isSingle && element.form == Form::every)
        return {Value::list(matches), true, {}, nullptr};
    const std::size_t count = matches->size();
    if (isSingle && count > 0 && wanted <= 0) {
        const std::size_t index = element.form == Form::middle ? (count - 1) / 2
            : element.form == Form::some
            ? std::random_device()() % count
            : count - static_cast<std::size_t>(std::min<std::int64_t>(-wanted, static_cast<std::int64_t>(count) + 1));
        if (index < count)
            return {(*matches)[index], false, {}, nullptr};
    }
    if (element.form == Form::range) {
        const auto first = position(element, keys.first, count);
        const auto last = position(element, keys.last, count);
        if (first && last) {
            auto range = makeRef<List>();
            for (std::size_t i = std::min(*first, *last); i <= std::max(*first, *last); ++i)
                range->append((*matches)[i]);
            return {Value::list(range), true, {}, nullptr};
        }
    }
    ScriptError error(ErrorNumber::invalidIndex, {}, Value::object(owner));
    std::string specifier = describePart(element, keys);
    if (const std::string place = describeOwner(element.container, Value::object(owner)); !place.empty())
        specifier += " of " + place;
    explain(error, owner->application(), specifier + " whose " + describeCondition(*expr.condition));
    throw error;
}

} // namespace mervo::applescript
