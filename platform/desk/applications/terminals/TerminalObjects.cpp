#include "platform/desk/applications/terminals/TerminalObjects.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/desk/applications/terminals/TerminalApplication.h"

#include <limits>

namespace mervo::desk {
namespace {

using applescript::Designation;
using applescript::Kind;
using applescript::makeRef;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;
using namespace TerminalTerm;

constexpr std::int64_t kFarthest = std::numeric_limits<std::int16_t>::max(); // pixels, as X counts them

Value listOf(const Bounds& bounds)
{
    return Value::list({Value::integer(bounds.left), Value::integer(bounds.top), Value::integer(bounds.right),
        Value::integer(bounds.bottom)});
}

int pixels(const Value& value)
{
    const std::int64_t number = applescript::toInteger(value);
    if (number < -kFarthest || number > kFarthest)
        throw ScriptError(applescript::ErrorNumber::cannotSet);
    return static_cast<int>(number);
}

/// -10006 for what is no rectangle.
Bounds toBounds(const Value& value)
{
    if (!value.is(Kind::list) || value.asList().items().size() != 4)
        throw ScriptError(applescript::ErrorNumber::cannotSet);
    const auto& sides = value.asList().items();
    const Bounds bounds{pixels(sides[0]), pixels(sides[1]), pixels(sides[2]), pixels(sides[3])};
    if (bounds.width() <= 0 || bounds.height() <= 0)
        throw ScriptError(applescript::ErrorNumber::cannotSet);
    return bounds;
}

} // namespace

TerminalObject::TerminalObject(TerminalApplication& terminal)
    : terminal_(terminal)
    , class_(CommonTerm::applicationClass)
{
}

TerminalObject::TerminalObject(TerminalApplication& terminal, TermId objectClass, std::string id)
    : terminal_(terminal)
    , class_(objectClass)
    , id_(std::move(id))
{
}

applescript::Application& TerminalObject::application() const
{
    return terminal_;
}

const applescript::ClassTerm& TerminalObject::objectClass() const
{
    return *terminal_.dictionary().findClass(class_);
}

Designation TerminalObject::designation() const
{
    if (class_ == CommonTerm::applicationClass)
        return {};
    return {Designation::Form::id, objectClass().name, Value::text(id_), {}};
}

Value TerminalObject::get(TermId property)
{
    switch (property) {
    case bounds: {
        const auto known = terminal_.boundsOf(id_);
        return known ? listOf(*known) : Value::missing();
    }
    case currentTab:
    case selectedTab:
        return at(tab);
    case currentSession:
        return at(session);
    case tty: {
        const std::string found = terminal_.ttyOf(id_);
        return found.empty() ? Value::missing() : Value::text(found);
    }
    default:
        return Value::text(id_);
    }
}

void TerminalObject::set(TermId, const Value& value)
{
    terminal_.place(id_, toBounds(value));
}

Value TerminalObject::every(TermId elementClass)
{
    std::vector<Value> found;
    if (class_ == CommonTerm::applicationClass) {
        for (const std::string& id : terminal_.windowIds())
            found.push_back(Value::object(makeRef<TerminalObject>(terminal_, window, id)));
    } else if (exists()) {
        found.push_back(at(elementClass));
    }
    return Value::list(std::move(found));
}

bool TerminalObject::exists()
{
    return class_ == CommonTerm::applicationClass || terminal_.isThere(id_);
}

Value TerminalObject::at(TermId objectClass) const
{
    return Value::object(makeRef<TerminalObject>(terminal_, objectClass, id_));
}

} // namespace mervo::desk
