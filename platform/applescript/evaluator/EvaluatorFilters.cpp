#include "platform/applescript/evaluator/DictionaryTerms.h"
#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/FilterCondition.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

namespace mervo::applescript {

namespace {

/// Puts the candidates of a filter before its condition, one after the other, and the frame back as it was.
class Candidates {
public:
    Candidates(Frame& frame, Filter& filter)
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
    Frame& frame_;
    Value it_;
    Filter* filter_;
};

} // namespace

/// A property of the candidate of a filter: of all candidates in one question, at the first that asks. None: it is
/// not a property of the elements.
Value Evaluator::column(const PropertyExpr& expr)
{
    Filter& filter = *frame_->filter;
    Application& application = filter.parent->application();
    const PropertyTerm* term = propertyTerm(application.dictionary(), *filter.elementClass, expr);
    if (!term)
        return {};
    for (const auto& [id, values] : filter.columns) {
        if (id == term->id)
            return filter.index < values.asList().size() ? values.asList()[filter.index] : Value();
    }
    Value values = applications_.ask(
        application, [&] { return filter.parent->propertyOfEvery(filter.elementClass->id, term->id); },
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

Found Evaluator::findFilter(const FilterExpr& expr)
{
    const ElementExpr& element = *expr.element;
    Found owner = container(element.container);
    if (owner.every)
        owner = Found::many(fetched(std::move(owner)));
    if (owner.isMany) {
        auto values = makeRef<List>();
        for (const Value& each : owner.value.asList().items()) {
            if (!each.is(Kind::object))
                failElement(ErrorNumber::noSuchObject, element, {}, each);
            values->append(filtered(Ref<Object>(&each.asObject()), expr).value);
        }
        return Found::many(Value::list(values));
    }
    if (owner.value.is(Kind::application))
        return filtered(applications_.rootOf(owner.value), expr);
    if (!owner.value.is(Kind::object))
        failElement(ErrorNumber::noSuchObject, element, keysOf(element), owner.value);
    return filtered(Ref<Object>(&owner.value.asObject()), expr);
}

Found Evaluator::filtered(const Ref<Object>& owner, const FilterExpr& expr)
{
    using Form = ElementExpr::Form;
    const ElementExpr& element = *expr.element;
    const Keys keys = keysOf(element);
    const ClassTerm* term = elementTerm(*owner, element);
    if (!term)
        failElement(ErrorNumber::noSuchObject, element, keys, Value::object(owner));
    // Of the first, second... only as many are looked for.
    const std::int64_t wanted = element.form == Form::index ? toInteger(keys.first) : 0;
    const Ref<List> matches =
        matchesOf(owner, *term, *expr.condition, wanted > 0 ? static_cast<std::size_t>(wanted) : SIZE_MAX);
    if (element.form == Form::every)
        return Found::many(Value::list(matches));
    if (element.form == Form::range) {
        if (const auto range = rangeOf(keys, matches->size())) {
            auto items = makeRef<List>();
            for (std::size_t i = range->first; i < range->first + range->count; ++i)
                items->append((*matches)[i]);
            return Found::many(Value::list(items));
        }
    } else if (const auto index = positionOf(element.form, keys.first, matches->size())) {
        return {.value = (*matches)[*index]};
    }
    const Value ownerValue = Value::object(owner);
    failIn(owner->application(), ScriptError(ErrorNumber::invalidIndex, {}, ownerValue),
        writer_.whole(expr, keys, ownerValue));
}

/// The elements that the condition holds for, at most so many.
Ref<List> Evaluator::matchesOf(const Ref<Object>& owner, const ClassTerm& elements, const Expr& holds, std::size_t most)
{
    auto matches = makeRef<List>();
    Filter filter;
    filter.parent = owner;
    filter.elementClass = &elements;
    filter.candidates = fetched(Found::elements(owner, elements));
    const Candidates restored(*frame_, filter);
    const List& candidates = filter.candidates.asList();
    for (; filter.index < candidates.size() && matches->size() < most; ++filter.index) {
        Limits::step();
        frame_->it = candidates[filter.index];
        if (condition(holds))
            matches->append(candidates[filter.index]);
    }
    return matches;
}

} // namespace mervo::applescript
