#include "platform/applescript/evaluator/TextSettings.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Comparison.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/TextPieces.h"

#include <algorithm>
#include <limits>

namespace mervo::applescript {

TextSettings::TextSettings()
{
    setDelimiters(Value::list(std::vector<Value>{Value::text("")}));
}

void TextSettings::setDelimiters(const Value& value)
{
    std::vector<Ref<Text>> texts;
    if (value.is(Kind::list)) {
        for (const Value& item : value.asList().items())
            texts.push_back(toText(item));
    } else {
        texts.push_back(toText(value));
    }
    delimiters_ = copied(value);
    delimiterTexts_ = std::move(texts);
    joiner_ = delimiterTexts_.empty() ? std::string() : std::string(delimiterTexts_.front()->view());
    last_.text = {};
}

const std::vector<TextRange>& TextSettings::pieces(const Value& owner, TextUnit unit)
{
    Text& text = owner.asText();
    if (last_.text.get() == &text && last_.unit == unit && last_.rules == rules)
        return last_.ranges;
    last_.text = {};
    switch (unit) {
    case TextUnit::word:
        last_.ranges = wordsOf(text.view());
        break;
    case TextUnit::paragraph:
        last_.ranges = paragraphsOf(text.view());
        break;
    case TextUnit::character:
        last_.ranges = charactersOf(text.view());
        break;
    case TextUnit::textItem:
        last_.ranges = textItems(text);
        break;
    }
    Limits::passed(text.view().size());
    last_.text = Ref<Text>(&text);
    last_.unit = unit;
    last_.rules = rules;
    return last_.ranges;
}

/// Between empty delimiters every character is an item.
std::vector<TextRange> TextSettings::textItems(const Text& text) const
{
    if (text.view().empty())
        return {};
    const bool isBare = std::all_of(delimiterTexts_.begin(), delimiterTexts_.end(),
        [](const Ref<Text>& delimiter) { return delimiter->view().empty(); });
    if (isBare)
        return charactersOf(text.view());
    return itemsBetween(
        findAll(text, delimiterTexts_, rules, std::numeric_limits<std::size_t>::max()), text.view().size());
}

} // namespace mervo::applescript
