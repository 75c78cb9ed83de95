#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/References.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"

#include <random>

namespace mervo::applescript {

namespace {

/// Only the items of the range are made of a list that makes its items when they are asked for.
template <typename Range>
Value slice(Value all, const std::optional<Range>& range)
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

Evaluator::Found Evaluator::find(const Expr& expr)
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
        return {evaluate(expr), false, {}, nullptr};
    }
}

/// What a part belongs to: what was written, else the target of the `tell`.
Evaluator::Found Evaluator::container(const ExprPtr& expr)
{
    Found found = expr ? find(*expr) : Found{frame_->it, false, {}, nullptr};
    if (!found.every && !found.isMany)
        found.value = dereferenced(std::move(found.value));
    return found;
}

Value Evaluator::fetched(Found found)
{
    if (!found.every)
        return std::move(found.value);
    Value all = ask(
        found.parent->application(), [&] { return found.parent->every(found.every->id); },
        [&] { return "every " + found.every->name + " of " + specifierOf(*found.parent); });
    return slice(std::move(all), found.range);
}

/// How many elements were found, without fetching them.
std::size_t Evaluator::countOf(const Found& found)
{
    if (found.range)
        return found.range->count;
    return ask(found.parent->application(), [&] { return found.parent->count(found.every->id); });
}

Evaluator::Found Evaluator::findProperty(const PropertyExpr& expr)
{
    const bool isOfIt = !expr.container
        || (expr.container->kind == ExprKind::target && as<TargetExpr>(*expr.container).which == TargetExpr::Which::it);
    if (isOfIt && frame_->filter) {
        if (Value value = column(expr); !value.is(Kind::none))
            return {std::move(value), false, {}, nullptr};
    }
    Found owner = expr.container ? find(*expr.container) : Found{frame_->it, false, {}, nullptr};
    // `contents of v` looks at the reference itself, every other property through it.
    if (!owner.every && !owner.isMany && owner.value.is(Kind::reference)) {
        owner.value = dereferenced(std::move(owner.value));
        if (expr.property == LanguageProperty::contents && expr.container)
            return owner;
    }
    if (owner.every) {
        Object& parent = *owner.parent;
        if (expr.property == LanguageProperty::length)
            return {Value::integer(static_cast<std::int64_t>(countOf(owner))), false, {}, nullptr};
        const Dictionary& dictionary = parent.application().dictionary();
        const PropertyTerm* term = expr.dictionary == &dictionary
            ? dictionary.findProperty(*owner.every, expr.propertyId)
            : dictionary.findProperty(*owner.every, expr.name);
        if (term) {
            Value values = ask(
                parent.application(), [&] { return parent.propertyOfEvery(owner.every->id, term->id); },
                [&] { return expr.name.spelling() + " of every " + owner.every->name + " of " + specifierOf(parent); });
            return {slice(std::move(values), owner.range), true, {}, nullptr};
        }
        owner = {fetched(std::move(owner)), true, {}, nullptr};
    }
    if (owner.isMany)
        return propertyOfMany(owner.value, expr);
    return {propertyOf(owner.value, expr), false, {}, nullptr};
}

Evaluator::Found Evaluator::propertyOfMany(const Value& list, const PropertyExpr& expr)
{
    Limits::enter();
    if (expr.property == LanguageProperty::length)
        return {Value::integer(static_cast<std::int64_t>(list.asList().size())), false, {}, nullptr};
    auto values = makeRef<List>();
    values->reserve(list.asList().size());
    for (const Value& owner : list.asList().items())
        values->append(owner.is(Kind::list) ? propertyOfMany(owner, expr).value : propertyOf(owner, expr));
    return {Value::list(values), true, {}, nullptr};
}

Value Evaluator::propertyOf(const Value& value, const PropertyExpr& expr)
{
    const Value owner = dereferenced(value);
    if (owner.is(Kind::object))
        return objectProperty(owner.asObject(), expr);
    return languageProperty(owner, expr);
}

const PropertyTerm* Evaluator::propertyTerm(const Object& object, const PropertyExpr& expr) const
{
    const Dictionary& dictionary = object.application().dictionary();
    if (expr.dictionary == &dictionary) {
        if (const PropertyTerm* term = dictionary.findProperty(object.objectClass(), expr.propertyId))
            return term;
    }
    return dictionary.findProperty(object.objectClass(), expr.name);
}

Value Evaluator::objectProperty(Object& object, const PropertyExpr& expr)
{
    const Ref<Object> held(&object);
    if (const PropertyTerm* term = propertyTerm(object, expr)) {
        return ask(
            object.application(), [&] { return object.get(term->id); },
            [&] { return describe(expr, Value::object(held)); });
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
    ScriptError error(ErrorNumber::noSuchObject, {}, Value::object(held));
    explain(error, object.application(), describe(expr, Value::object(held)));
    throw error;
}

Value Evaluator::allProperties(Object& object)
{
    auto record = makeRef<Record>();
    record->set(Symbol("class"), Value::classTerm(Symbol(object.objectClass().name)));
    for (const PropertyTerm* term : object.application().dictionary().properties(object.objectClass())) {
        record->addMissing(Symbol(term->name),
            ask(
                object.application(), [&] { return object.get(term->id); },
                [&] { return term->name + " of " + specifierOf(object); }));
    }
    return Value::record(record);
}

Evaluator::Keys Evaluator::keysOf(const ElementExpr& expr)
{
    // A bound such as `word 2` is no value of its own: it is looked up in the text that is cut.
    const auto key = [&](const ExprPtr& part) {
        const bool isBound =
            part && part->kind == ExprKind::element && !static_cast<const ElementExpr&>(*part).container;
        return !part || isBound ? Value() : operand(*part);
    };
    return {key(expr.key), key(expr.lastKey)};
}

Evaluator::Found Evaluator::findElement(const ElementExpr& expr)
{
    if (!expr.container && expr.form == ElementExpr::Form::id && !frame_->it.is(Kind::object)
        && !frame_->it.is(Kind::application))
        return {elementById(expr, keysOf(expr)), false, {}, nullptr};
    Found owner = container(expr.container);
    const Keys keys = keysOf(expr);
    if (owner.every)
        owner = {fetched(std::move(owner)), true, {}, nullptr};
    if (owner.isMany)
        return elementOfMany(owner.value, expr, keys);
    return elementOf(owner.value, expr, keys);
}

Evaluator::Found Evaluator::elementOfMany(const Value& list, const ElementExpr& expr, const Keys& keys)
{
    Limits::enter();
    auto values = makeRef<List>();
    for (const Value& owner : list.asList().items()) {
        values->append(
            owner.is(Kind::list) ? elementOfMany(owner, expr, keys).value : fetched(elementOf(owner, expr, keys)));
    }
    return {Value::list(values), true, {}, nullptr};
}

Evaluator::Found Evaluator::elementOf(const Value& value, const ElementExpr& expr, const Keys& keys)
{
    const Value owner = dereferenced(value);
    switch (owner.kind()) {
    case Kind::object: {
        const Ref<Object> object(&owner.asObject());
        if (elementClass(*object, expr))
            return objectElement(object, expr, keys);
        // A rich text has the elements of a text, whether or not its dictionary names them.
        if (const Value text = object->coerced(Kind::text); text.is(Kind::text))
            return {textElement(text, expr, keys), false, {}, nullptr};
        break;
    }
    case Kind::application:
        return objectElement(rootOf(owner), expr, keys);
    case Kind::text:
        return {textElement(owner, expr, keys), false, {}, nullptr};
    case Kind::list:
        return {listElement(owner, expr, keys), false, {}, nullptr};
    default:
        break;
    }
    failElement(ErrorNumber::noSuchObject, expr, keys, owner);
}

const ClassTerm* Evaluator::elementClass(const Object& owner, const ElementExpr& expr) const
{
    const Dictionary& dictionary = owner.application().dictionary();
    const ClassTerm* term = expr.dictionary == &dictionary ? expr.classTerm : dictionary.findClass(expr.className);
    return term && dictionary.hasElement(owner.objectClass(), term->id) ? term : nullptr;
}

void Evaluator::failElement(int number, const ElementExpr& expr, const Keys& keys, const Value& owner)
{
    ScriptError error(number, {}, owner);
    if (owner.is(Kind::object)) {
        explain(error, owner.asObject().application(), describe(expr, keys, owner));
        throw error;
    }
    const std::string specifier = describe(expr, keys, owner);
    throw number == ErrorNumber::invalidIndex ? ScriptError::invalidIndex(specifier, owner)
                                              : ScriptError::noSuchObject(specifier, owner);
}

/// One element by name, id or position, counted from 1 or backwards from -1; none where there is no such element.
Value Evaluator::singleElement(
    const Ref<Object>& owner, const ClassTerm& term, const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    if (expr.form == Form::id)
        return owner->withId(term.id, keys.first);
    if (expr.form == Form::index && (expr.isNamed || keys.first.is(Kind::text)))
        return owner->named(term.id, toText(keys.first)->view());
    const auto count = static_cast<std::int64_t>(
        expr.form == Form::index && keys.first.is(Kind::integer) && keys.first.asInteger() > 0 ? 0
                                                                                               : owner->count(term.id));
    std::int64_t index = 0;
    if (expr.form == Form::middle)
        index = (count + 1) / 2;
    else if (expr.form == Form::some)
        index = count > 0 ? 1 + static_cast<std::int64_t>(std::random_device()() % static_cast<unsigned>(count)) : 0;
    else
        index = toInteger(keys.first);
    if (index < 0)
        index += count + 1;
    return index < 1 ? Value() : owner->at(term.id, static_cast<std::size_t>(index - 1));
}

Evaluator::Found Evaluator::objectElement(const Ref<Object>& owner, const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    const Value ownerValue = Value::object(owner);
    const ClassTerm* term = elementClass(*owner, expr);
    if (!term)
        failElement(ErrorNumber::noSuchObject, expr, keys, ownerValue);
    if (expr.form == Form::every)
        return {{}, false, owner, term};
    const auto specifier = [&] { return describe(expr, keys, ownerValue); };
    if (expr.form != Form::range) {
        Value element = ask(
            owner->application(), [&] { return singleElement(owner, *term, expr, keys); }, specifier);
        const bool isByName = expr.form == Form::id || expr.isNamed || keys.first.is(Kind::text);
        if (element.is(Kind::none))
            failElement(isByName ? ErrorNumber::noSuchObject : ErrorNumber::invalidIndex, expr, keys, ownerValue);
        return {std::move(element), false, {}, nullptr};
    }
    const std::size_t count = ask(
        owner->application(), [&] { return owner->count(term->id); }, specifier);
    const auto first = position(expr, keys.first, count);
    const auto last = position(expr, keys.last, count);
    if (!first || !last)
        failElement(ErrorNumber::invalidIndex, expr, keys, ownerValue);
    const Found::Range range{std::min(*first, *last), std::max(*first, *last) - std::min(*first, *last) + 1};
    return {{}, false, owner, term, range};
}

Value ElementReference::fetch() const
{
    Value element = evaluator_.ask(
        parent_->application(), [&] { return parent_->at(class_.id, index_); }, [&] { return specifier(); });
    if (!element.is(Kind::none))
        return element;
    ScriptError error(ErrorNumber::invalidIndex);
    evaluator_.explain(error, parent_->application(), specifier());
    throw error;
}

void ElementReference::store(Value value) const
{
    evaluator_.failSet(specifier(), value);
}

std::string ElementReference::specifier() const
{
    std::string text = class_.name + " " + std::to_string(index_ + 1);
    if (parent_->objectClass().id != CommonTerm::applicationClass)
        text += " of " + specifierOf(*parent_);
    return text;
}

Value PartReference::fetch() const
{
    if (part_.kind == ExprKind::property)
        return evaluator_.propertyOf(owner_, as<PropertyExpr>(part_));
    return evaluator_.fetched(evaluator_.elementOf(owner_, as<ElementExpr>(part_), {firstKey_, lastKey_}));
}

void PartReference::store(Value value) const
{
    if (part_.kind == ExprKind::property)
        return evaluator_.setProperty(owner_, as<PropertyExpr>(part_), value);
    const auto& element = as<ElementExpr>(part_);
    const auto index = owner_.is(Kind::list) && element.form == ElementExpr::Form::index
        ? evaluator_.position(element, firstKey_, owner_.asList().size())
        : std::nullopt;
    if (!index || element.languageClass != LanguageClass::item)
        evaluator_.failSet(specifier(), value);
    owner_.asList().replace(*index, std::move(value));
}

std::string PartReference::specifier() const
{
    if (part_.kind == ExprKind::property)
        return as<PropertyExpr>(part_).name.spelling() + " of " + quoted(owner_);
    return evaluator_.describePart(as<ElementExpr>(part_), {firstKey_, lastKey_}) + " of " + quoted(owner_);
}

} // namespace mervo::applescript
