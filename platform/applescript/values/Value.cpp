#include "platform/applescript/values/Value.h"

#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Object.h"
#include "platform/applescript/values/Reference.h"
#include "platform/applescript/values/Text.h"

namespace mervo::applescript {

namespace {

constexpr std::int64_t kLargestInteger = 536870911;

class DateCell final : public Cell {
public:
    explicit DateCell(Date when)
        : date(when)
    {
    }
    Date date;
};

} // namespace

Value Value::boolean(bool value) noexcept
{
    Value result(Kind::boolean);
    result.payload_.boolean = value;
    return result;
}

Value Value::integer(std::int64_t value) noexcept
{
    if (value > kLargestInteger || value < -kLargestInteger)
        return real(static_cast<double>(value));
    Value result(Kind::integer);
    result.payload_.integer = value;
    return result;
}

Value Value::real(double value) noexcept
{
    Value result(Kind::real);
    result.payload_.real = value;
    return result;
}

Value Value::text(std::string_view value)
{
    return text(Text::make(value));
}

Value Value::text(Ref<Text> value) noexcept
{
    return {Kind::text, value.get()};
}

Value Value::list(std::vector<Value> items)
{
    return list(makeRef<List>(std::move(items)));
}

Value Value::list(Ref<List> value) noexcept
{
    return {Kind::list, value.get()};
}

Value Value::record(Ref<Record> value) noexcept
{
    return {Kind::record, value.get()};
}

Value Value::date(Date value)
{
    return {Kind::date, new DateCell(value)};
}

Value Value::file(std::string_view path)
{
    return {Kind::file, Text::make(path).get()};
}

Value Value::object(Ref<Object> value) noexcept
{
    return {Kind::object, value.get()};
}

Value Value::reference(Ref<Reference> value) noexcept
{
    return {Kind::reference, value.get()};
}

Value Value::application(std::string_view name)
{
    return {Kind::application, Text::make(name).get()};
}

Text& Value::asText() const noexcept
{
    return static_cast<Text&>(*payload_.cell);
}

List& Value::asList() const noexcept
{
    return static_cast<List&>(*payload_.cell);
}

Record& Value::asRecord() const noexcept
{
    return static_cast<Record&>(*payload_.cell);
}

Date& Value::asDate() const noexcept
{
    return static_cast<DateCell&>(*payload_.cell).date;
}

Object& Value::asObject() const noexcept
{
    return static_cast<Object&>(*payload_.cell);
}

Reference& Value::asReference() const noexcept
{
    return static_cast<Reference&>(*payload_.cell);
}

std::string_view Value::view() const noexcept
{
    return asText().view();
}

Value dereferenced(Value value)
{
    while (value.is(Kind::reference)) {
        Limits::step();
        const Value held = value;
        value = held.asReference().fetch();
    }
    return value;
}

} // namespace mervo::applescript
