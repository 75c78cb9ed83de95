#pragma once

#include "platform/applescript/values/Date.h"
#include "platform/applescript/values/RefCounted.h"
#include "platform/applescript/values/Symbol.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace mervo::applescript {

class List;
class Object;
class Record;
class Reference;
class Text;

/// What a value is. `none` is the absence of one: a command without a result, a variable that is not set.
enum class Kind : std::uint8_t {
    none,
    missing, // `missing value`
    boolean,
    integer, // within ±536870911
    real,
    text,
    list,
    record,
    date,
    classTerm, // a class as a value: `class of x`
    constant, // a word of the language or of a dictionary: `yes`, `February`, `iMessage`
    file, // a file by its POSIX path
    object, // an object of an application
    reference, // a description that was not fetched: `item 2 of L`, `a reference to ...`
    script, // `me`
    language, // `AppleScript`
    application, // `application "X"`, whether or not there is one
};

/// One value of a script: 16 bytes, cheap to copy. Texts, lists, records, dates and objects are shared: a copy of the
/// Value refers to the same list. `copied` (Comparison.h) makes a deep copy.
class Value { // NOLINT(cppcoreguidelines-special-member-functions): one assignment takes its value and serves both
public:
    Value() noexcept = default;
    Value(const Value& other) noexcept
        : kind_(other.kind_)
        , payload_(other.payload_)
    {
        if (hasCell())
            payload_.cell->retain();
    }
    Value(Value&& other) noexcept
        : kind_(std::exchange(other.kind_, Kind::none))
        , payload_(other.payload_)
    {
    }
    Value& operator=(Value other) noexcept
    {
        std::swap(kind_, other.kind_);
        std::swap(payload_, other.payload_);
        return *this;
    }
    ~Value()
    {
        if (hasCell())
            payload_.cell->release();
    }

    static Value missing() noexcept { return Value(Kind::missing); }
    static Value boolean(bool value) noexcept;
    /// A whole number; one outside the range of the language's integers becomes a real.
    static Value integer(std::int64_t value) noexcept;
    static Value real(double value) noexcept;
    /// UTF-8; ill-formed bytes are kept as they are.
    static Value text(std::string_view value);
    static Value text(Ref<Text> value) noexcept;
    static Value list(std::vector<Value> items);
    static Value list(Ref<List> value) noexcept;
    static Value record(Ref<Record> value) noexcept;
    static Value date(Date value);
    static Value classTerm(Symbol name) noexcept { return Value(Kind::classTerm, name); }
    static Value constant(Symbol word) noexcept { return Value(Kind::constant, word); }
    static Value file(std::string_view path);
    static Value object(Ref<Object> value) noexcept;
    static Value reference(Ref<Reference> value) noexcept;
    static Value script() noexcept { return Value(Kind::script); }
    static Value language() noexcept { return Value(Kind::language); }
    static Value application(std::string_view name);

    Kind kind() const noexcept { return kind_; }
    bool is(Kind kind) const noexcept { return kind_ == kind; }
    bool isNumber() const noexcept { return kind_ == Kind::integer || kind_ == Kind::real; }

    // The contents. Each is valid for its own kind only.
    bool asBoolean() const noexcept { return payload_.boolean; }
    std::int64_t asInteger() const noexcept { return payload_.integer; }
    double asReal() const noexcept { return payload_.real; }
    double asNumber() const noexcept { return is(Kind::real) ? asReal() : static_cast<double>(asInteger()); }
    Symbol asSymbol() const noexcept { return payload_.symbol; } // a class or a constant
    Text& asText() const noexcept; // also the path of a file, the name of an application
    List& asList() const noexcept;
    Record& asRecord() const noexcept;
    Date& asDate() const noexcept; // shared: setting it is seen through every other name of this date
    Object& asObject() const noexcept;
    Reference& asReference() const noexcept;
    /// The bytes of a text, of a file's path or of an application's name.
    std::string_view view() const noexcept;

    /// The same list, date, object or text, not merely an equal one.
    bool isSameCell(const Value& other) const noexcept
    {
        return kind_ == other.kind_ && hasCell() && payload_.cell == other.payload_.cell;
    }

private:
    explicit Value(Kind kind) noexcept
        : kind_(kind)
    {
    }
    Value(Kind kind, Symbol symbol) noexcept
        : kind_(kind)
    {
        payload_.symbol = symbol;
    }
    Value(Kind kind, Cell* cell) noexcept
        : kind_(kind)
    {
        payload_.cell = cell;
        cell->retain();
    }
    bool hasCell() const noexcept
    {
        constexpr std::uint32_t withCell = 1U << static_cast<unsigned>(Kind::text)
            | 1U << static_cast<unsigned>(Kind::list) | 1U << static_cast<unsigned>(Kind::record)
            | 1U << static_cast<unsigned>(Kind::date) | 1U << static_cast<unsigned>(Kind::file)
            | 1U << static_cast<unsigned>(Kind::object) | 1U << static_cast<unsigned>(Kind::reference)
            | 1U << static_cast<unsigned>(Kind::application);
        return (withCell >> static_cast<unsigned>(kind_) & 1U) != 0;
    }

    Kind kind_ = Kind::none;
    union Payload {
        Payload() noexcept
            : integer(0)
        {
        }
        bool boolean;
        std::int64_t integer;
        double real;
        Symbol symbol;
        Cell* cell;
    } payload_;
};

} // namespace mervo::applescript
