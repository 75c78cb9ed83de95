#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/unicode.h"

#include <algorithm>
#include <random>
#include <utf8proc.h>

namespace mervo::applescript {

namespace {

bool isWordPart(std::int32_t point)
{
    if (point < 0x80)
        return std::isalnum(static_cast<int>(point)) || point == '_';
    switch (utf8proc_category(point)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
        return true;
    default:
        return false;
    }
}

/// Letters and digits; an apostrophe or full stop between letters, a comma or full stop between digits.
std::vector<TextRange> wordsOf(std::string_view text)
{
    std::vector<TextRange> words;
    bool isInside = false;
    for (std::size_t at = 0; at < text.size();) {
        const platform::CodePoint point = platform::firstCodePoint(text.substr(at));
        const std::size_t next = at + std::max<std::size_t>(point.length, 1);
        bool belongs = point.valid && isWordPart(static_cast<std::int32_t>(point.value));
        if (!belongs && isInside && next < text.size()) {
            const auto after = static_cast<std::int32_t>(platform::firstCodePoint(text.substr(next)).value);
            const bool joinsLetters = point.value == '\'' || point.value == 0x2019 || point.value == '.';
            const bool joinsDigits =
                (point.value == ',' || point.value == '.') && std::isdigit(static_cast<unsigned char>(text[at - 1]));
            belongs = (joinsDigits && after >= '0' && after <= '9')
                || (joinsLetters && isWordPart(after) && !std::isdigit(static_cast<unsigned char>(text[at - 1])));
        }
        if (belongs && !isInside)
            words.push_back({at, next});
        else if (belongs)
            words.back().end = next;
        isInside = belongs;
        at = next;
    }
    return words;
}

/// Lines, split at LF, CR or CR LF; a text that ends with a line end has an empty last one.
std::vector<TextRange> paragraphsOf(std::string_view text)
{
    std::vector<TextRange> paragraphs;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\n' && text[at] != '\r')
            continue;
        paragraphs.push_back({start, at});
        if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n')
            ++at;
        start = at + 1;
    }
    if (!text.empty())
        paragraphs.push_back({start, text.size()});
    return paragraphs;
}

std::vector<TextRange> charactersOf(const Text& text)
{
    std::vector<TextRange> characters;
    std::string_view rest = text.view();
    while (!rest.empty()) {
        const std::size_t start = text.view().size() - rest.size();
        rest.remove_prefix(platform::firstCharacterLength(rest));
        characters.push_back({start, text.view().size() - rest.size()});
    }
    return characters;
}

std::vector<TextRange> between(std::size_t length, const std::vector<TextRange>& delimiters)
{
    std::vector<TextRange> items;
    std::size_t start = 0;
    for (const TextRange& delimiter : delimiters) {
        items.push_back({start, delimiter.start});
        start = delimiter.end;
    }
    items.push_back({start, length});
    return items;
}

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

} // namespace

/// The place of an index counted from 1, or from -1 backwards; none when it is outside.
std::optional<std::size_t> Evaluator::position(const ElementExpr& expr, const Value& key, std::size_t count) const
{
    using Form = ElementExpr::Form;
    if (expr.form == Form::middle)
        return count == 0 ? std::nullopt : std::optional((count - 1) / 2);
    if (expr.form == Form::some)
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

/// `character id 10`, `text id {72, 105}`
Value Evaluator::elementById(const ElementExpr& expr, const Keys& keys)
{
    if (expr.languageClass != LanguageClass::text && expr.languageClass != LanguageClass::character)
        throw ScriptError::noSuchObject(describePart(expr, keys));
    std::string text;
    if (keys.first.is(Kind::list)) {
        for (const Value& point : keys.first.asList().items())
            appendUtf8(text, toInteger(point));
    } else {
        appendUtf8(text, toInteger(keys.first));
    }
    return Value::text(text);
}

/// The parts of a text; those of the last text asked for are kept.
const std::vector<TextRange>& Evaluator::pieces(const Value& owner, Unit unit)
{
    Text& text = owner.asText();
    if (pieces_.text.get() == &text && pieces_.unit == unit && pieces_.rules == rules_)
        return pieces_.ranges;
    pieces_.text = {};
    switch (unit) {
    case Unit::word:
        pieces_.ranges = wordsOf(text.view());
        break;
    case Unit::paragraph:
        pieces_.ranges = paragraphsOf(text.view());
        break;
    case Unit::character:
        pieces_.ranges = charactersOf(text);
        break;
    case Unit::textItem: {
        const bool isBare = std::all_of(delimiterTexts_.begin(), delimiterTexts_.end(),
            [](const Ref<Text>& delimiter) { return delimiter->view().empty(); });
        if (text.view().empty()) {
            pieces_.ranges.clear();
        } else if (isBare) {
            pieces_.ranges = charactersOf(text);
        } else {
            pieces_.ranges = between(
                text.view().size(), findAll(text, delimiterTexts_, rules_, std::numeric_limits<std::size_t>::max()));
        }
        break;
    }
    }
    Limits::passed(text.view().size());
    pieces_.text = Ref<Text>(&text);
    pieces_.unit = unit;
    pieces_.rules = rules_;
    return pieces_.ranges;
}

Value Evaluator::textElement(const Value& owner, const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    Unit unit = Unit::character;
    switch (expr.languageClass) {
    case LanguageClass::text:
        if (expr.form == Form::range)
            return textRange(owner, expr, keys);
        failElement(ErrorNumber::noSuchObject, expr, keys, owner);
    case LanguageClass::character:
    case LanguageClass::item:
        break;
    case LanguageClass::word:
        unit = Unit::word;
        break;
    case LanguageClass::paragraph:
        unit = Unit::paragraph;
        break;
    case LanguageClass::textItem:
        unit = Unit::textItem;
        break;
    default:
        failElement(ErrorNumber::noSuchObject, expr, keys, owner);
    }
    const Text& text = owner.asText();
    if (expr.form == Form::id || expr.isNamed || keys.first.is(Kind::text))
        failElement(ErrorNumber::noSuchObject, expr, keys, owner);
    if (unit == Unit::character && expr.form != Form::every && expr.form != Form::range) {
        const auto index = position(expr, keys.first, text.characterCount());
        if (!index)
            failElement(ErrorNumber::noSuchObject, expr, keys, owner);
        return sliceOf(owner, {text.byteOffset(*index), text.byteOffset(*index + 1)});
    }
    const std::vector<TextRange>& ranges = pieces(owner, unit);
    if (expr.form != Form::every && expr.form != Form::range) {
        const auto index = position(expr, keys.first, ranges.size());
        if (!index)
            failElement(ErrorNumber::noSuchObject, expr, keys, owner);
        return sliceOf(owner, ranges[*index]);
    }
    std::size_t first = 0;
    std::size_t end = ranges.size();
    if (expr.form == Form::range) {
        const auto from = position(expr, keys.first, ranges.size());
        const auto to = position(expr, keys.last, ranges.size());
        if (!from || !to)
            failElement(ErrorNumber::noSuchObject, expr, keys, owner);
        first = std::min(*from, *to);
        end = std::max(*from, *to) + 1;
    }
    auto list = makeRef<List>();
    list->reserve(end - first);
    for (std::size_t i = first; i < end; ++i)
        list->append(sliceOf(owner, ranges[i]));
    return Value::list(list);
}

/// The bytes that a bound marks: a character by its number, or an element such as `word 2`.
TextRange Evaluator::boundOf(
    const Value& owner, const ElementExpr& expr, const Expr& key, const Value& value, bool isFirst)
{
    const Text& text = owner.asText();
    if (key.kind != ExprKind::element) {
        const auto index = position(expr, value, text.characterCount());
        if (!index)
            failElement(ErrorNumber::noSuchObject, expr, isFirst ? Keys{value, {}} : Keys{{}, value}, owner);
        return {text.byteOffset(*index), text.byteOffset(*index + 1)};
    }
    const auto& mark = as<ElementExpr>(key);
    const Value at = operand(*mark.key);
    const Unit unit = mark.languageClass == LanguageClass::word ? Unit::word
        : mark.languageClass == LanguageClass::paragraph        ? Unit::paragraph
        : mark.languageClass == LanguageClass::textItem         ? Unit::textItem
                                                                : Unit::character;
    const std::vector<TextRange>& ranges = pieces(owner, unit);
    const auto index = position(mark, at, ranges.size());
    if (!index)
        failElement(ErrorNumber::noSuchObject, mark, {at, {}}, owner);
    return ranges[*index];
}

/// `text 2 thru 4 of s`, `text from word 1 to word 2 of s`
Value Evaluator::textRange(const Value& owner, const ElementExpr& expr, const Keys& keys)
{
    if (owner.view().empty() && expr.key->kind == ExprKind::literal && expr.place.start == expr.key->place.start)
        return owner; // `text of ""`
    const auto isOutside = [&](const ExprPtr& key, const Value& value) {
        return key->kind != ExprKind::element && !position(expr, value, owner.asText().characterCount());
    };
    if (isOutside(expr.key, keys.first) || isOutside(expr.lastKey, keys.last))
        failElement(ErrorNumber::noSuchObject, expr, keys, owner);
    const TextRange first = boundOf(owner, expr, *expr.key, keys.first, true);
    const TextRange last = boundOf(owner, expr, *expr.lastKey, keys.last, false);
    return sliceOf(owner, {std::min(first.start, last.start), std::max(first.end, last.end)});
}

Value Evaluator::listElement(const Value& owner, const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    if (!isClassOfLists(expr.languageClass) || expr.form == Form::id || expr.isNamed || keys.first.is(Kind::text))
        failElement(ErrorNumber::noSuchObject, expr, keys, owner);
    const bool takesAll = expr.languageClass == LanguageClass::item;
    Value source = owner;
    if (!takesAll) {
        auto some = makeRef<List>();
        for (const Value& item : owner.asList().items()) {
            if (isOfClass(item, expr.languageClass))
                some->append(item);
        }
        source = Value::list(some);
    }
    const List& list = source.asList();
    if (expr.form != Form::every && expr.form != Form::range) {
        const auto index = position(expr, keys.first, list.size());
        if (!index)
            failElement(ErrorNumber::noSuchObject, expr, keys, owner);
        return list[*index];
    }
    std::size_t first = 0;
    std::size_t end = list.size();
    if (expr.form == Form::range) {
        const auto from = position(expr, keys.first, list.size());
        const auto to = position(expr, keys.last, list.size());
        if (!from || !to)
            failElement(ErrorNumber::noSuchObject, expr, keys, owner);
        first = std::min(*from, *to);
        end = std::max(*from, *to) + 1;
    }
    auto range = makeRef<List>();
    range->reserve(end - first);
    for (std::size_t i = first; i < end; ++i)
        range->append(list[i]);
    return Value::list(range);
}

} // namespace mervo::applescript
