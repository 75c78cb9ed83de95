#pragma once

#include "platform/applescript/values/Dictionary.h"
#include "platform/applescript/values/Value.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace mervo::applescript {

class Application;
class Object;

/// How an object is referred to (`message id 7`, `mailbox "INBOX"`, `window 1`, the property `content`), and in which
/// container.
struct Designation {
    enum class Form { application, id, name, index, property };

    Form form = Form::application;
    std::string term = {}; // the class, or the property
    Value key = {}; // the id, name or index
    Ref<Object> container = {}; // null: the application itself
};

/// An object of an application: what a class of its dictionary describes.
///
/// An object is a stable handle: it stands for one message or one event by its identity, not by its position, and it
/// stays valid while others come and go. Using an object that is gone throws ScriptError -1728. There can be many
/// handles (100,000 messages), so a derived class should hold little: a pointer to its model and an identity.
/// All functions may throw ScriptError; an empty message is filled in by the interpreter.
class Object : public Cell {
public:
    virtual Application& application() const = 0;
    virtual const ClassTerm& objectClass() const = 0;
    virtual Designation designation() const = 0;

    /// The interpreter asks only for properties that the class has, and sets only settable ones. A property that is
    /// another object is given as Value::object, an unset one as Value::missing. The default of `set` is -10006; an
    /// unsuitable value is -10006 too (throw it with an empty message), or -1700 by the helpers of Coercion.h.
    virtual Value get(TermId property) = 0;
    virtual void set(TermId property, const Value& value);

    /// The elements of one class, in order, as a list of objects. The interpreter asks only for element classes that
    /// the dictionary names. The default has none.
    virtual Value every(TermId elementClass);
    /// How many, without making the objects. The default counts `every`.
    virtual std::size_t count(TermId elementClass);
    /// One element: by position from 0, by name ignoring case, by id. None (`Value()`) when there is no such element.
    /// The defaults search `every`; override them where there is a direct lookup.
    virtual Value at(TermId elementClass, std::size_t index);
    virtual Value named(TermId elementClass, std::string_view name);
    virtual Value withId(TermId elementClass, const Value& id);
    /// One property of every element, in element order and of the same length as `every`, `missing value` where an
    /// element has none. The default asks each element.
    virtual Value propertyOfEvery(TermId elementClass, TermId property);

    /// Whether the object still exists. The default is true.
    virtual bool exists();
    /// Whether both handles stand for the same object. The default compares class and designation.
    virtual bool isSame(const Object& other) const;
    /// A conversion of the application's own (a rich text as text). None (`Value()`) if there is none: the script gets
    /// -1700.
    virtual Value coerced(Kind kind);
};

} // namespace mervo::applescript
