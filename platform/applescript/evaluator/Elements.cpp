#include "platform/applescript/evaluator/Elements.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"

#include <algorithm>
#include <random>
#include <utf8proc.h>

namespace mervo::applescript {

namespace {

bool isOfClass(const Value& value, LanguageClass which)
{
    switch (which) {
    case LanguageClass::item:
    case LanguageClass::anything:
        return true;
    case LanguageClass::text:
        return value.is(Kind::text);
    case LanguageClass::integer:
        return value.is(Kind::integer);
    case LanguageClass::real:
        return value.is(Kind::real);
    case LanguageClass::number:
        return value.isNumber();
    case LanguageClass::boolean:
        return value.is(Kind::boolean);
    case LanguageClass::list:
        return value.is(Kind::list);
    case LanguageClass::record:
        return value.is(Kind::record);
    case LanguageClass::date:
        return value.is(Kind::date);
    case LanguageClass::classTerm:
        return value.is(Kind::classTerm);
    case LanguageClass::constant:
        return value.is(Kind::constant);
    case LanguageClass::file:
    case LanguageClass::alias:
    case LanguageClass::posixFile:
        return value.is(Kind::file);
    case LanguageClass::reference:
        return value.is(Kind::reference) || value.is(Kind::object);
    case LanguageClass::script:
        return value.is(Kind::script);
    case LanguageClass::application:
        return value.is(Kind::application);
    default:
        return false;
    }
}

bool isClassOfLists(LanguageClass which)
{
    return which != LanguageClass::none && which != LanguageClass::character && which != LanguageClass::word
        && which != LanguageClass::paragraph && which != LanguageClass::textItem;
}

void appendUtf8(std::string& text, std::int64_t point)
{
    utf8proc_uint8_t bytes[4];
    if (point < 0 || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000))
        throw ScriptError::cannotCoerce(Value::integer(point), "text");
    const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(point), bytes);
    text.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

Value sliceOf(const Value& text, TextRange range)
{
    return Value::text(text.view().substr(range.start, range.end - range.start));
}

/// Neither texts nor lists know their elements by name or id.
bool isByName(const ElementExpr& expr, const Keys& keys)
{
    return expr.form == ElementExpr::Form::id || expr.isNamed || keys.first.is(Kind::text);
}

bool isOne(ElementExpr::Form form)
{
    return form != ElementExpr::Form::every && form != ElementExpr::Form::range;
}

/// Of `every` and of a range.
std::optional<Positions> positionsOf(const ElementExpr& expr, const Keys& keys, std::size_t count)
{
    return expr.form == ElementExpr::Form::range ? rangeOf(keys, count) : Positions{0, count};
}

template <typename Element>
Value listOf(const Positions& range, Element&& element)
{
    auto list = makeRef<List>();
    list->reserve(range.count);
    for (std::size_t i = range.first; i < range.first + range.count; ++i)
        list->append(element(i));
    return Value::list(list);
}

} // namespace

std::optional<std::size_t> positionOf(ElementExpr::Form form, const Value& key, std::size_t count)
{
    using Form = ElementExpr::Form;
    if (form == Form::middle)
        return count == 0 ? std::nullopt : std::optional((count - 1) / 2);
    if (form == Form::some)
        return count == 0 ? std::nullopt : std::optional<std::size_t>(std::random_device()() % count);
    if (key.is(Kind::none))
        return {};
    std::int64_t index = key.is(Kind::integer) ? key.asInteger() : toInteger(key);
    if (index < 0)
        index += static_cast<std::int64_t>(count) + 1;
    if (index < 1 || static_cast<std::size_t>(index) > count)
        return {};
    return static_cast<std::size_t>(index - 1);
}

std::optional<Positions> rangeOf(const Keys& keys, std::size_t count)
{
    const auto one = positionOf(ElementExpr::Form::range, keys.first, count);
    const auto other = positionOf(ElementExpr::Form::range, keys.last, count);
    if (!one || !other)
        return {};
    const auto [first, last] = std::minmax(*one, *other);
    return Positions{first, last - first + 1};
}

std::optional<Value> elementOfList(const Value& owner, const ElementExpr& expr, const Keys& keys)
{
    if (!isClassOfLists(expr.languageClass) || isByName(expr, keys))
        return {};
    Value source = owner;
    if (expr.languageClass != LanguageClass::item) {
        auto some = makeRef<List>();
        for (const Value& item : owner.asList().items()) {
            if (isOfClass(item, expr.languageClass))
                some->append(item);
        }
        source = Value::list(some);
    }
    const List& list = source.asList();
    if (isOne(expr.form)) {
        const auto index = positionOf(expr.form, keys.first, list.size());
        return index ? std::optional<Value>(list[*index]) : std::nullopt;
    }
    const auto range = positionsOf(expr, keys, list.size());
    return range ? std::optional<Value>(listOf(*range, [&](std::size_t i) { return list[i]; })) : std::nullopt;
}

std::optional<TextUnit> unitOf(LanguageClass which)
{
    switch (which) {
    case LanguageClass::character:
    case LanguageClass::item:
        return TextUnit::character;
    case LanguageClass::word:
        return TextUnit::word;
    case LanguageClass::paragraph:
        return TextUnit::paragraph;
    case LanguageClass::textItem:
        return TextUnit::textItem;
    default:
        return {};
    }
}

Value elementOfText(const Value& owner, const ElementExpr& expr, const Keys& keys, TextSettings& settings)
{
    const auto unit = unitOf(expr.languageClass);
    if (!unit || isByName(expr, keys))
        return {};
    if (unit == TextUnit::character && isOne(expr.form)) { // needs no list of all characters
        const Text& text = owner.asText();
        const auto index = positionOf(expr.form, keys.first, text.characterCount());
        return index ? sliceOf(owner, {text.byteOffset(*index), text.byteOffset(*index + 1)}) : Value();
    }
    const std::vector<TextRange>& pieces = settings.pieces(owner, *unit);
    if (isOne(expr.form)) {
        const auto index = positionOf(expr.form, keys.first, pieces.size());
        return index ? sliceOf(owner, pieces[*index]) : Value();
    }
    const auto range = positionsOf(expr, keys, pieces.size());
    return range ? listOf(*range, [&](std::size_t i) { return sliceOf(owner, pieces[i]); }) : Value();
}

Value cutOf(const Value& text, TextRange one, TextRange other)
{
    return sliceOf(text, {std::min(one.start, other.start), std::max(one.end, other.end)});
}

Value textOfCodePoints(const Value& points)
{
    std::string text;
    if (points.is(Kind::list)) {
        for (const Value& point : points.asList().items())
            appendUtf8(text, toInteger(point));
    } else {
        appendUtf8(text, toInteger(points));
    }
    return Value::text(text);
}

} // namespace mervo::applescript
