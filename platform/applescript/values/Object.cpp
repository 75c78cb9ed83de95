#include "platform/applescript/values/Object.h"

#include "platform/applescript/values/Application.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/ScriptError.h"
#include "platform/applescript/values/Text.h"

namespace mervo::applescript {

namespace {

/// The first element whose property is equal to a value; none without such a property or element.
Value firstWith(Object& owner, TermId elementClass, TermId property, const Value& wanted)
{
    const Dictionary& dictionary = owner.application().dictionary();
    const ClassTerm* term = dictionary.findClass(elementClass);
    if (!term || !dictionary.findProperty(*term, property))
        return {};
    const Value all = owner.every(elementClass);
    const Value keys = owner.propertyOfEvery(elementClass, property);
    for (std::size_t i = 0; i < all.asList().size() && i < keys.asList().size(); ++i) {
        if (areEqual(keys.asList()[i], wanted, TextRules{}))
            return all.asList()[i];
    }
    return {};
}

} // namespace

void Object::set(TermId, const Value&)
{
    throw ScriptError(ErrorNumber::cannotSet);
}

Value Object::every(TermId)
{
    return Value::list(std::vector<Value>{});
}

std::size_t Object::count(TermId elementClass)
{
    return every(elementClass).asList().size();
}

Value Object::at(TermId elementClass, std::size_t index)
{
    const Value all = every(elementClass);
    return index < all.asList().size() ? all.asList()[index] : Value();
}

Value Object::named(TermId elementClass, std::string_view name)
{
    return firstWith(*this, elementClass, CommonTerm::name, Value::text(name));
}

Value Object::withId(TermId elementClass, const Value& id)
{
    return firstWith(*this, elementClass, CommonTerm::id, id);
}

Value Object::propertyOfEvery(TermId elementClass, TermId property)
{
    const Value all = every(elementClass);
    auto values = makeRef<List>();
    values->reserve(all.asList().size());
    for (const Value& element : all.asList().items())
        values->append(element.asObject().get(property));
    return Value::list(values);
}

bool Object::exists()
{
    return true;
}

bool Object::isSame(const Object& other) const
{
    if (this == &other)
        return true;
    if (&application() != &other.application() || &objectClass() != &other.objectClass())
        return false;
    const Designation mine = designation();
    const Designation theirs = other.designation();
    if (mine.form != theirs.form || mine.term != theirs.term || !areEqual(mine.key, theirs.key, TextRules{}))
        return false;
    if (!mine.container || !theirs.container)
        return !mine.container && !theirs.container;
    return mine.container->isSame(*theirs.container);
}

Value Object::coerced(Kind)
{
    return {};
}

} // namespace mervo::applescript
