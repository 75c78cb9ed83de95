#pragma once

#include "platform/applescript/values/Text.h"
#include "platform/applescript/values/TextRules.h"
#include "platform/applescript/values/Value.h"

#include <string>
#include <vector>

namespace mervo::applescript {

enum class TextUnit { character, word, paragraph, textItem };

/// What a script sets for its work with texts: what counts when they are compared (`considering`), and AppleScript's
/// text item delimiters.
class TextSettings {
public:
    TextSettings();

    TextRules rules;

    const Value& delimiters() const noexcept { return delimiters_; }
    /// A text or a list of texts; -1700 for anything else.
    void setDelimiters(const Value& value);
    /// What stands between the items when a list becomes a text: the first delimiter.
    const std::string& joiner() const noexcept { return joiner_; }

    /// The pieces of a text, valid until the next call. Those of the last text are kept: a loop over `word i of s` asks
    /// for them at every round.
    const std::vector<TextRange>& pieces(const Value& text, TextUnit unit);

private:
    std::vector<TextRange> textItems(const Text& text) const;

    Value delimiters_;
    std::vector<Ref<Text>> delimiterTexts_;
    std::string joiner_;
    struct {
        Ref<Text> text;
        TextUnit unit = TextUnit::word;
        TextRules rules;
        std::vector<TextRange> ranges;
    } last_;
};

} // namespace mervo::applescript
