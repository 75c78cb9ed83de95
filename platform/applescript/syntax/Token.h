#pragma once

#include "platform/applescript/values/ScriptError.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::applescript {

enum class TokenKind {
    word, // `text` without letter case
    barred, // |any name|
    text, // contents of a text literal
    integer, // `number`; may be beyond the range of integers
    real,
    ordinal, // 1st, 2nd: `number`
    raw, // «class utf8»
    symbol, // ASCII spelling: <= >= /= and 's among them
    lineEnd,
    end,
};

struct Token {
    TokenKind kind = TokenKind::end;
    Place place;
    std::string text;
    double number = 0;

    bool isWord(std::string_view word) const noexcept { return kind == TokenKind::word && text == word; }
    bool isSymbol(std::string_view symbol) const noexcept { return kind == TokenKind::symbol && text == symbol; }
    bool endsLine() const noexcept { return kind == TokenKind::lineEnd || kind == TokenKind::end; }
};

/// The tokens of a script, the last of them `end`. Comments are gone, continued lines joined. Throws ScriptError with
/// a place for a text, comment or name that is never closed and for a character that has no meaning.
std::vector<Token> tokensOf(std::string_view source);

/// "Expected X but found Y.": -2741 at the token.
[[noreturn]] void failExpected(std::string_view expected, const Token& found);
/// The token as an error names it: `identifier`, `“end”`, `end of line`.
std::string nameOf(const Token& token);
/// Words that are never a name.
bool isReserved(std::string_view word) noexcept;

/// How many tokens from the first spell the words; 0 when they do not.
std::size_t matchWords(std::span<const Token> tokens, std::string_view words) noexcept;

} // namespace mervo::applescript
