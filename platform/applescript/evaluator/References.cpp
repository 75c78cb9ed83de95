#include "platform/applescript/evaluator/References.h"

#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/List.h"

namespace mervo::applescript {

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

Value ElementReference::fetch() const
{
    Value element = applications_.ask(
        parent_->application(), [&] { return parent_->at(class_.id, index_); }, [&] { return specifier(); });
    if (!element.is(Kind::none))
        return element;
    failIn(parent_->application(), ScriptError(ErrorNumber::invalidIndex), specifier());
}

void ElementReference::store(Value value) const
{
    throw ScriptError::cannotSet(specifier(), value);
}

std::string ElementReference::specifier() const
{
    std::string text = class_.name + " " + std::to_string(index_ + 1);
    if (parent_->objectClass().id != CommonTerm::applicationClass)
        text += " of " + specifierOf(*parent_);
    return text;
}

Value VariableReference::fetch() const
{
    return defined(variable_, name_, {});
}

const Value& defined(const Value& variable, Symbol name, Place place)
{
    if (!variable.is(Kind::none))
        return variable;
    throw ScriptError::at(
        place, ErrorNumber::undefinedVariable, "The variable " + name.spelling() + " is not defined.");
}

} // namespace mervo::applescript
