#include "platform/applescript/evaluator/DictionaryTerms.h"

#include "platform/applescript/values/Application.h"

namespace mervo::applescript {

const PropertyTerm* propertyTerm(const Dictionary& dictionary, const ClassTerm& owner, const PropertyExpr& expr)
{
    if (expr.dictionary == &dictionary) {
        if (const PropertyTerm* term = dictionary.findProperty(owner, expr.propertyId))
            return term;
    }
    return dictionary.findProperty(owner, expr.name);
}

const PropertyTerm* propertyTerm(const Object& owner, const PropertyExpr& expr)
{
    return propertyTerm(owner.application().dictionary(), owner.objectClass(), expr);
}

const ClassTerm* elementTerm(const Object& owner, const ElementExpr& expr)
{
    const Dictionary& dictionary = owner.application().dictionary();
    const ClassTerm* term = expr.dictionary == &dictionary ? expr.classTerm : dictionary.findClass(expr.className);
    return term && dictionary.hasElement(owner.objectClass(), term->id) ? term : nullptr;
}

} // namespace mervo::applescript
