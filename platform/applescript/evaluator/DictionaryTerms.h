#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"
#include "platform/applescript/values/Object.h"

/// What a term of the source means in the dictionary of the object that it is applied to: that need not be the
/// dictionary whose terms were in scope, and then the term is looked up by its name.
namespace mervo::applescript {

/// Null when the class has no such property.
const PropertyTerm* propertyTerm(const Dictionary& dictionary, const ClassTerm& owner, const PropertyExpr& expr);
const PropertyTerm* propertyTerm(const Object& owner, const PropertyExpr& expr);
/// Null when the object's class has no such elements.
const ClassTerm* elementTerm(const Object& owner, const ElementExpr& expr);

} // namespace mervo::applescript
