#include "platform/applescript/values/Comparison.h"

#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Object.h"
#include "platform/applescript/values/Reference.h"

namespace mervo::applescript {

namespace {

bool areEqualLists(const List& left, const List& right, const TextRules& rules)
{
    if (left.size() != right.size())
        return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (!areEqual(left[i], right[i], rules))
            return false;
    }
    return true;
}

bool areEqualRecords(const Record& left, const Record& right, const TextRules& rules)
{
    if (left.size() != right.size())
        return false;
    for (const Record::Field& field : left.fields()) {
        const Value* other = right.find(field.label);
        if (!other || !areEqual(field.value, *other, rules))
            return false;
    }
    return true;
}

} // namespace

bool areEqual(const Value& left, const Value& right, const TextRules& rules)
{
    Limits::enter();
    Limits::step();
    if (left.isNumber() && right.isNumber())
        return left.asNumber() == right.asNumber();
    if (left.kind() != right.kind())
        return false;
    switch (left.kind()) {
    case Kind::none:
    case Kind::missing:
    case Kind::script:
    case Kind::language:
        return true;
    case Kind::boolean:
        return left.asBoolean() == right.asBoolean();
    case Kind::integer:
    case Kind::real:
        return left.asNumber() == right.asNumber();
    case Kind::text:
        return areEqual(left.asText(), right.asText(), rules);
    case Kind::list:
        return areEqualLists(left.asList(), right.asList(), rules);
    case Kind::record:
        return areEqualRecords(left.asRecord(), right.asRecord(), rules);
    case Kind::date:
        return left.asDate() == right.asDate();
    case Kind::classTerm:
    case Kind::constant:
        return left.asSymbol() == right.asSymbol();
    case Kind::file:
        return left.view() == right.view();
    case Kind::object:
        return left.asObject().isSame(right.asObject());
    case Kind::reference:
        return left.asReference().isSame(right.asReference());
    case Kind::application:
        return areEqual(left.asText(), right.asText(), TextRules{});
    }
    return false;
}

Value copied(const Value& value)
{
    Limits::enter();
    Limits::step();
    if (value.is(Kind::date))
        return Value::date(value.asDate());
    if (value.is(Kind::list)) {
        auto list = makeRef<List>();
        list->reserve(value.asList().size());
        for (std::size_t i = 0; i < value.asList().size(); ++i)
            list->append(copied(value.asList()[i]));
        return Value::list(list);
    }
    if (value.is(Kind::record)) {
        auto record = makeRef<Record>();
        for (const Record::Field& field : value.asRecord().fields())
            record->set(field.label, copied(field.value));
        return Value::record(record);
    }
    return value;
}

} // namespace mervo::applescript
