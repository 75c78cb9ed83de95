#include "platform/applescript/evaluator/DictionaryTerms.h"
#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

#include <random>

namespace mervo::applescript {

namespace {

/// One element by name, id or position, counted from 1 or backwards from -1; none where there is no such element.
Value singleElement(const Ref<Object>& owner, const ClassTerm& term, const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    if (expr.form == Form::id)
        return owner->withId(term.id, keys.first);
    if (expr.form == Form::index && (expr.isNamed || keys.first.is(Kind::text)))
        return owner->named(term.id, toText(keys.first)->view());
    const auto count = static_cast<std::int64_t>(
        expr.form == Form::index && keys.first.is(Kind::integer) && keys.first.asInteger() > 0 ? 0
                                                                                               : owner->count(term.id));
    std::int64_t index = 0;
    if (expr.form == Form::middle) {
        index = (count + 1) / 2;
    } else if (expr.form == Form::some) {
        index = count > 0 ? 1 + static_cast<std::int64_t>(std::random_device()() % static_cast<unsigned>(count)) : 0;
    } else {
        index = toInteger(keys.first);
    }
    if (index < 0)
        index += count + 1;
    return index < 1 ? Value() : owner->at(term.id, static_cast<std::size_t>(index - 1));
}

} // namespace

Keys Evaluator::keysOf(const ElementExpr& expr)
{
    // A bound such as `word 2` is no value of its own: it is looked up in the text that is cut.
    const auto key = [&](const ExprPtr& part) {
        const bool isBound = part && part->kind == ExprKind::element && !as<ElementExpr>(*part).container;
        return !part || isBound ? Value() : operand(*part);
    };
    return {key(expr.key), key(expr.lastKey)};
}

Found Evaluator::findElement(const ElementExpr& expr)
{
    const bool isInApplication = frame_->it.is(Kind::object) || frame_->it.is(Kind::application);
    if (!expr.container && expr.form == ElementExpr::Form::id && !isInApplication)
        return {.value = elementById(expr)};
    Found owner = container(expr.container);
    const Keys keys = keysOf(expr);
    if (owner.every)
        owner = Found::many(fetched(std::move(owner)));
    if (owner.isMany)
        return elementOfMany(owner.value, expr, keys);
    return elementOf(owner.value, expr, keys);
}

/// `character id 10`, `text id {72, 105}`
Value Evaluator::elementById(const ElementExpr& expr)
{
    const Keys keys = keysOf(expr);
    if (expr.languageClass != LanguageClass::text && expr.languageClass != LanguageClass::character)
        throw ScriptError::noSuchObject(writer_.part(expr, keys));
    return textOfCodePoints(keys.first);
}

Found Evaluator::elementOfMany(const Value& list, const ElementExpr& expr, const Keys& keys)
{
    Limits::enter();
    auto values = makeRef<List>();
    for (const Value& owner : list.asList().items()) {
        values->append(
            owner.is(Kind::list) ? elementOfMany(owner, expr, keys).value : fetched(elementOf(owner, expr, keys)));
    }
    return Found::many(Value::list(values));
}

Found Evaluator::elementOf(const Value& value, const ElementExpr& expr, const Keys& keys)
{
    const Value owner = dereferenced(value);
    switch (owner.kind()) {
    case Kind::object: {
        const Ref<Object> object(&owner.asObject());
        if (elementTerm(*object, expr))
            return objectElement(object, expr, keys);
        // A rich text has the elements of a text, whether or not its dictionary names them.
        if (const Value text = object->coerced(Kind::text); text.is(Kind::text))
            return {.value = textElement(text, expr, keys)};
        break;
    }
    case Kind::application:
        return objectElement(applications_.rootOf(owner), expr, keys);
    case Kind::text:
        return {.value = textElement(owner, expr, keys)};
    case Kind::list:
        if (auto element = elementOfList(owner, expr, keys))
            return {.value = *std::move(element)};
        break;
    default:
        break;
    }
    failElement(ErrorNumber::noSuchObject, expr, keys, owner);
}

void Evaluator::failElement(int number, const ElementExpr& expr, const Keys& keys, const Value& owner)
{
    const std::string specifier = writer_.whole(expr, keys, owner);
    if (owner.is(Kind::object))
        failIn(owner.asObject().application(), ScriptError(number, {}, owner), specifier);
    throw number == ErrorNumber::invalidIndex ? ScriptError::invalidIndex(specifier, owner)
                                              : ScriptError::noSuchObject(specifier, owner);
}

Found Evaluator::objectElement(const Ref<Object>& owner, const ElementExpr& expr, const Keys& keys)
{
    using Form = ElementExpr::Form;
    const Value ownerValue = Value::object(owner);
    const ClassTerm* term = elementTerm(*owner, expr);
    if (!term)
        failElement(ErrorNumber::noSuchObject, expr, keys, ownerValue);
    if (expr.form == Form::every)
        return Found::elements(owner, *term);
    const auto specifier = [&] { return writer_.whole(expr, keys, ownerValue); };
    if (expr.form != Form::range) {
        Value element = applications_.ask(
            owner->application(), [&] { return singleElement(owner, *term, expr, keys); }, specifier);
        const bool isByName = expr.form == Form::id || expr.isNamed || keys.first.is(Kind::text);
        if (element.is(Kind::none))
            failElement(isByName ? ErrorNumber::noSuchObject : ErrorNumber::invalidIndex, expr, keys, ownerValue);
        return {.value = std::move(element)};
    }
    const std::size_t count = applications_.ask(
        owner->application(), [&] { return owner->count(term->id); }, specifier);
    const auto range = rangeOf(keys, count);
    if (!range)
        failElement(ErrorNumber::invalidIndex, expr, keys, ownerValue);
    return Found::elements(owner, *term, range);
}

Value Evaluator::textElement(const Value& owner, const ElementExpr& expr, const Keys& keys)
{
    if (expr.languageClass == LanguageClass::text && expr.form == ElementExpr::Form::range)
        return textRange(owner, expr, keys);
    if (Value element = elementOfText(owner, expr, keys, texts_); !element.is(Kind::none))
        return element;
    failElement(ErrorNumber::noSuchObject, expr, keys, owner);
}

/// `text 2 thru 4 of s`, `text from word 1 to word 2 of s`
Value Evaluator::textRange(const Value& owner, const ElementExpr& expr, const Keys& keys)
{
    if (owner.view().empty() && expr.key->kind == ExprKind::literal && expr.place.start == expr.key->place.start)
        return owner; // `text of ""`
    const Text& text = owner.asText();
    // Both numbers are checked before an element such as `word 2` is looked up.
    const auto characterAt = [&](const ExprPtr& key, const Value& value) -> std::optional<TextRange> {
        if (key->kind == ExprKind::element)
            return {};
        const auto index = positionOf(expr.form, value, text.characterCount());
        if (!index)
            failElement(ErrorNumber::noSuchObject, expr, keys, owner);
        return TextRange{text.byteOffset(*index), text.byteOffset(*index + 1)};
    };
    const std::optional<TextRange> first = characterAt(expr.key, keys.first);
    const std::optional<TextRange> last = characterAt(expr.lastKey, keys.last);
    const TextRange from = first ? *first : pieceOf(owner, as<ElementExpr>(*expr.key));
    return cutOf(owner, from, last ? *last : pieceOf(owner, as<ElementExpr>(*expr.lastKey)));
}

/// The piece of a text that bounds a range: `word 2`.
TextRange Evaluator::pieceOf(const Value& owner, const ElementExpr& bound)
{
    const Value key = bound.key ? operand(*bound.key) : Value(); // `middle word` has none
    const auto& pieces = texts_.pieces(owner, unitOf(bound.languageClass).value_or(TextUnit::character));
    const auto index = positionOf(bound.form, key, pieces.size());
    if (!index)
        failElement(ErrorNumber::noSuchObject, bound, {key, {}}, owner);
    return pieces[*index];
}

} // namespace mervo::applescript
