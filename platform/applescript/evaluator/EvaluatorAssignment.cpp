#include "platform/applescript/evaluator/DictionaryTerms.h"
#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/evaluator/Properties.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Reference.h"

namespace mervo::applescript {

void Evaluator::assign(const Expr& target, const Value& value)
{
    Limits::enter();
    switch (target.kind) {
    case ExprKind::variable:
        slot(as<Variable>(target).use) = value;
        return;
    case ExprKind::list:
        return assignList(as<ListExpr>(target), value);
    case ExprKind::property:
        return assignProperty(as<PropertyExpr>(target), value);
    case ExprKind::element:
        return assignElement(as<ElementExpr>(target), value);
    case ExprKind::insertion:
        return assignInsertion(as<InsertionExpr>(target), value);
    default:
        break;
    }
    throw ScriptError::cannotSet(quoted(find(target).value), value);
}

void Evaluator::assignList(const ListExpr& target, const Value& value)
{
    const Value list = dereferenced(value);
    if (!list.is(Kind::list))
        throw ScriptError::cannotCoerce(list, "list");
    for (std::size_t i = 0; i < target.items.size(); ++i) {
        if (i >= list.asList().size())
            throw ScriptError::noSuchObject("item " + std::to_string(i + 1) + " of " + quoted(list), list);
        assign(*target.items[i], list.asList()[i]);
    }
}

void Evaluator::assignProperty(const PropertyExpr& target, const Value& value)
{
    Found owner = ownerOf(target.container);
    if (target.property == LanguageProperty::contents && owner.isSingle() && owner.value.is(Kind::reference))
        return owner.value.asReference().store(value);
    if (owner.isSingle())
        return setProperty(owner.value, target, value);
    const Value all = fetched(std::move(owner));
    setEach(all.asList(), [&](const Value& each) { setProperty(each, target, value); });
}

void Evaluator::setEach(const List& owners, const std::function<void(const Value&)>& set)
{
    const auto setAll = [&] {
        for (std::size_t i = 0; i < owners.size(); ++i)
            set(owners[i]);
    };
    if (owners.size() < 2 || !owners[0].is(Kind::object))
        return setAll();
    Application& application = owners[0].asObject().application();
    applications_.ask(application, [&] { application.together(setAll); });
}

void Evaluator::setProperty(const Value& ownerValue, const PropertyExpr& target, const Value& value)
{
    Limits::enter();
    const Value owner = dereferenced(ownerValue);
    switch (owner.kind()) {
    case Kind::object:
        return setObjectProperty(owner.asObject(), target, value);
    case Kind::application:
        return setObjectProperty(*applications_.rootOf(owner), target, value);
    case Kind::list: // of a reference to many: each in turn
        for (std::size_t i = 0; i < owner.asList().size(); ++i) {
            if (!owner.asList()[i].is(Kind::object))
                throw ScriptError::cannotSet(writer_.whole(target, owner), value);
        }
        return setEach(owner.asList(), [&](const Value& each) { setObjectProperty(each.asObject(), target, value); });
    case Kind::record:
        if (!owner.asRecord().find(target.name))
            throw ScriptError::cannotSet(writer_.whole(target, owner), value);
        owner.asRecord().set(target.name, value);
        return;
    case Kind::date:
        if (!setDateProperty(owner.asDate(), target.property, dereferenced(value)))
            throw ScriptError::cannotSet(writer_.whole(target, owner), value);
        return;
    case Kind::script:
    case Kind::language:
        if (target.property == LanguageProperty::textItemDelimiters)
            return texts_.setDelimiters(dereferenced(value));
        if (Value* variable = owner.is(Kind::script) ? globalNamed(target.name) : nullptr) {
            *variable = value;
            return;
        }
        break;
    default:
        break;
    }
    throw ScriptError::cannotSet(writer_.whole(target, owner), value);
}

void Evaluator::setObjectProperty(Object& object, const PropertyExpr& target, const Value& value)
{
    const Ref<Object> held(&object);
    const PropertyTerm* term = propertyTerm(object, target);
    const Value plain = dereferenced(value);
    const auto specifier = [&] { return writer_.whole(target, Value::object(held)); };
    if (!term || term->access != kSettable)
        failIn(object.application(), ScriptError::cannotSet(specifier(), plain));
    applications_.ask(object.application(), [&] {
        try {
            object.set(term->id, plain);
        } catch (const ScriptError& error) {
            if (!error.message.empty())
                throw;
            if (error.number == ErrorNumber::cannotSet)
                failIn(object.application(), ScriptError::cannotSet(specifier(), plain));
            failIn(object.application(), error, specifier());
        }
    });
}

void Evaluator::assignElement(const ElementExpr& target, const Value& value)
{
    const Value owner = fetched(container(target.container));
    const Keys keys = keysOf(target);
    const bool isItem = target.languageClass == LanguageClass::item && target.form != ElementExpr::Form::every
        && target.form != ElementExpr::Form::range && target.form != ElementExpr::Form::id;
    if (!owner.is(Kind::list) || !isItem)
        throw ScriptError::cannotSet(writer_.whole(target, keys, owner), value);
    const auto index = positionOf(target.form, keys.first, owner.asList().size());
    if (!index)
        throw ScriptError::noSuchObject(writer_.whole(target, keys, owner), owner);
    owner.asList().replace(*index, value);
}

/// `set end of L to x`
void Evaluator::assignInsertion(const InsertionExpr& target, const Value& value)
{
    const Value list = dereferenced(fetched(find(*target.container)));
    const bool isEnd = target.where == InsertionExpr::Where::end;
    if (!list.is(Kind::list) || (!isEnd && target.where != InsertionExpr::Where::beginning))
        throw ScriptError::cannotSet((isEnd ? "end of " : "beginning of ") + quoted(list), value);
    if (isEnd) {
        list.asList().append(value);
    } else {
        list.asList().prepend(value);
    }
}

} // namespace mervo::applescript
