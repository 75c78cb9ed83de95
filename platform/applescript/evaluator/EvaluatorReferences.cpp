#include "platform/applescript/evaluator/DictionaryTerms.h"
#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/Properties.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

#include <algorithm>

namespace mervo::applescript {

namespace {

/// Only the items of the range are made of a list that makes its items when they are asked for.
Value slice(Value all, const std::optional<Positions>& range)
{
    if (!range)
        return all;
    auto items = makeRef<List>();
    const std::size_t end = std::min(all.asList().size(), range->first + range->count);
    for (std::size_t i = range->first; i < end; ++i)
        items->append(all.asList()[i]);
    return Value::list(items);
}

} // namespace

Found Evaluator::find(const Expr& expr)
{
    Limits::enter();
    switch (expr.kind) {
    case ExprKind::property:
        return findProperty(as<PropertyExpr>(expr));
    case ExprKind::element:
        return findElement(as<ElementExpr>(expr));
    case ExprKind::filter:
        return findFilter(as<FilterExpr>(expr));
    default:
        return {.value = evaluate(expr)};
    }
}

/// What a part belongs to: what was written, else the target of the `tell`.
Found Evaluator::ownerOf(const ExprPtr& written)
{
    return written ? find(*written) : Found{.value = frame_->it};
}

/// The same, seen through references.
Found Evaluator::container(const ExprPtr& written)
{
    Found found = ownerOf(written);
    if (found.isSingle())
        found.value = dereferenced(std::move(found.value));
    return found;
}

Value Evaluator::fetched(Found found)
{
    if (!found.every)
        return std::move(found.value);
    Value all = applications_.ask(
        found.parent->application(), [&] { return found.parent->every(found.every->id); },
        [&] { return "every " + found.every->name + " of " + specifierOf(*found.parent); });
    return slice(std::move(all), found.range);
}

/// How many elements were found, without fetching them.
std::size_t Evaluator::countOf(const Found& found)
{
    if (found.range)
        return found.range->count;
    return applications_.ask(found.parent->application(), [&] { return found.parent->count(found.every->id); });
}

Found Evaluator::findProperty(const PropertyExpr& expr)
{
    const bool isOfIt = !expr.container
        || (expr.container->kind == ExprKind::target && as<TargetExpr>(*expr.container).which == TargetExpr::Which::it);
    if (isOfIt && frame_->filter) {
        if (Value value = column(expr); !value.is(Kind::none))
            return {.value = std::move(value)};
    }
    Found owner = ownerOf(expr.container);
    // `contents of v` looks at the reference itself, every other property through it.
    if (owner.isSingle() && owner.value.is(Kind::reference)) {
        owner.value = dereferenced(std::move(owner.value));
        if (expr.property == LanguageProperty::contents && expr.container)
            return owner;
    }
    if (owner.every)
        return propertyOfEvery(std::move(owner), expr);
    if (owner.isMany)
        return propertyOfMany(owner.value, expr);
    return {.value = propertyOf(owner.value, expr)};
}

/// Of elements that were not fetched: one question where the dictionary knows the property.
Found Evaluator::propertyOfEvery(Found owner, const PropertyExpr& expr)
{
    if (expr.property == LanguageProperty::length)
        return {.value = Value::integer(static_cast<std::int64_t>(countOf(owner)))};
    Object& parent = *owner.parent;
    const ClassTerm& elements = *owner.every;
    const PropertyTerm* term = propertyTerm(parent.application().dictionary(), elements, expr);
    if (!term)
        return propertyOfMany(fetched(std::move(owner)), expr);
    Value values = applications_.ask(
        parent.application(), [&] { return parent.propertyOfEvery(elements.id, term->id); },
        [&] { return expr.name.spelling() + " of every " + elements.name + " of " + specifierOf(parent); });
    return Found::many(slice(std::move(values), owner.range));
}

Found Evaluator::propertyOfMany(const Value& list, const PropertyExpr& expr)
{
    Limits::enter();
    if (expr.property == LanguageProperty::length)
        return {.value = Value::integer(static_cast<std::int64_t>(list.asList().size()))};
    auto values = makeRef<List>();
    values->reserve(list.asList().size());
    for (const Value& owner : list.asList().items())
        values->append(owner.is(Kind::list) ? propertyOfMany(owner, expr).value : propertyOf(owner, expr));
    return Found::many(Value::list(values));
}

Value Evaluator::propertyOf(const Value& value, const PropertyExpr& expr)
{
    const Value owner = dereferenced(value);
    if (owner.is(Kind::object))
        return objectProperty(owner.asObject(), expr);
    const bool isOfAnyValue =
        expr.property == LanguageProperty::className || expr.property == LanguageProperty::contents;
    if (owner.is(Kind::application) && !isOfAnyValue)
        return applicationProperty(owner, expr);
    if (owner.is(Kind::script) && !isOfAnyValue && expr.property != LanguageProperty::textItemDelimiters) {
        if (const Value* variable = globalNamed(expr.name); variable && !variable->is(Kind::none))
            return *variable;
    }
    if (auto found = propertyOfValue(owner, expr.property, expr.name, texts_))
        return *std::move(found);
    throw ScriptError::noSuchObject(writer_.whole(expr, owner), owner);
}

Value Evaluator::objectProperty(Object& object, const PropertyExpr& expr)
{
    const Ref<Object> held(&object);
    if (const PropertyTerm* term = propertyTerm(object, expr)) {
        return applications_.ask(
            object.application(), [&] { return object.get(term->id); },
            [&] { return writer_.whole(expr, Value::object(held)); });
    }
    switch (expr.property) {
    case LanguageProperty::className:
        return Value::classTerm(Symbol(object.objectClass().name));
    case LanguageProperty::properties:
        return allProperties(object);
    case LanguageProperty::contents:
        return Value::object(held);
    default:
        break;
    }
    if (object.objectClass().id == CommonTerm::applicationClass)
        return applicationProperty(Value::application(object.application().dictionary().applicationName()), expr);
    const Value owner = Value::object(held);
    failIn(object.application(), ScriptError(ErrorNumber::noSuchObject, {}, owner), writer_.whole(expr, owner));
}

Value Evaluator::allProperties(Object& object)
{
    auto record = makeRef<Record>();
    record->set(Symbol("class"), Value::classTerm(Symbol(object.objectClass().name)));
    for (const PropertyTerm* term : object.application().dictionary().properties(object.objectClass())) {
        record->addMissing(Symbol(term->name),
            applications_.ask(
                object.application(), [&] { return object.get(term->id); },
                [&] { return term->name + " of " + specifierOf(object); }));
    }
    return Value::record(record);
}

/// What an application is asked without being started; anything else belongs to its root object.
Value Evaluator::applicationProperty(const Value& owner, const PropertyExpr& expr)
{
    if (expr.property == LanguageProperty::running) {
        auto* known = applications_.withName(owner.view());
        return Value::boolean(known && ApplicationRegistry::instance(*known).isRunning());
    }
    auto& entry = applications_.entryOf(owner);
    switch (expr.property) {
    case LanguageProperty::id:
        return Value::text(entry.bundleId);
    case LanguageProperty::frontmost:
        return Value::boolean(applications_.launched(entry).isFrontmost());
    case LanguageProperty::version:
        return Value::text(ApplicationRegistry::instance(entry).version());
    default:
        break;
    }
    const Ref<Object> root = applications_.rootOf(owner); // an application may make its root anew at each call
    if (propertyTerm(*root, expr) || expr.property == LanguageProperty::properties)
        return objectProperty(*root, expr);
    if (expr.property == LanguageProperty::name)
        return Value::text(entry.names.front());
    failIn(root->application(), ScriptError(ErrorNumber::noSuchObject, {}, owner), expr.name.spelling());
}

/// A variable of the script; null when it has none of that name.
Value* Evaluator::globalNamed(Symbol name)
{
    const auto found = std::find(script_.globalNames.begin(), script_.globalNames.end(), name);
    return found == script_.globalNames.end()
        ? nullptr
        : &globals_[static_cast<std::size_t>(found - script_.globalNames.begin())];
}

/// `a reference to` a property or an element: the owner and the keys are known, the rest is looked up at each use.
class Evaluator::PartReference final : public Reference {
public:
    PartReference(Evaluator& evaluator, const Expr& part, Value owner, Keys keys)
        : evaluator_(evaluator)
        , part_(part)
        , owner_(std::move(owner))
        , keys_(std::move(keys))
    {
    }

    Value fetch() const override
    {
        if (part_.kind == ExprKind::property)
            return evaluator_.propertyOf(owner_, as<PropertyExpr>(part_));
        return evaluator_.fetched(evaluator_.elementOf(owner_, as<ElementExpr>(part_), keys_));
    }

    void store(Value value) const override
    {
        if (part_.kind == ExprKind::property)
            return evaluator_.setProperty(owner_, as<PropertyExpr>(part_), value);
        const auto& element = as<ElementExpr>(part_);
        const auto index = owner_.is(Kind::list) && element.form == ElementExpr::Form::index
            ? positionOf(element.form, keys_.first, owner_.asList().size())
            : std::nullopt;
        if (!index || element.languageClass != LanguageClass::item)
            throw ScriptError::cannotSet(specifier(), value);
        owner_.asList().replace(*index, std::move(value));
    }

    std::string specifier() const override
    {
        const std::string part = part_.kind == ExprKind::property
            ? as<PropertyExpr>(part_).name.spelling()
            : evaluator_.writer_.part(as<ElementExpr>(part_), keys_);
        return part + " of " + quoted(owner_);
    }

private:
    Evaluator& evaluator_;
    const Expr& part_;
    Value owner_;
    Keys keys_;
};

Value Evaluator::referenceToPart(const Expr& part)
{
    const bool isElement = part.kind == ExprKind::element;
    Value owner = fetched(container(isElement ? as<ElementExpr>(part).container : as<PropertyExpr>(part).container));
    Keys keys = isElement ? keysOf(as<ElementExpr>(part)) : Keys{};
    return Value::reference(makeRef<PartReference>(*this, part, std::move(owner), std::move(keys)));
}

} // namespace mervo::applescript
