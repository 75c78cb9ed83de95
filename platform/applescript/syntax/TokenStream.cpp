#include "platform/applescript/syntax/TokenStream.h"

namespace mervo::applescript {

TokenStream::TokenStream(std::string_view source)
    : source_(source)
    , tokens_(tokensOf(source))
{
}

void TokenStream::failAs(std::string message) const
{
    throw ScriptError::at(peek().place, ErrorNumber::syntax, std::move(message));
}

const Token& TokenStream::peek(std::size_t ahead) const noexcept
{
    const std::size_t index = at_ + ahead;
    return index < tokens_.size() ? tokens_[index] : tokens_.back();
}

bool TokenStream::takeWord(std::string_view word)
{
    if (!isWord(word))
        return false;
    ++at_;
    return true;
}

bool TokenStream::takeWords(std::string_view words)
{
    const std::size_t count = matchWords(rest(), words);
    at_ += count;
    return count > 0;
}

bool TokenStream::takeSymbol(std::string_view symbol)
{
    if (!isSymbol(symbol))
        return false;
    ++at_;
    return true;
}

void TokenStream::expectWord(std::string_view word)
{
    if (!takeWord(word))
        fail("“" + std::string(word) + "”");
}

void TokenStream::expectSymbol(std::string_view symbol)
{
    if (!takeSymbol(symbol))
        fail("“" + std::string(symbol) + "”");
}

/// Two operands side by side have an error of their own.
void TokenStream::expectLineEnd()
{
    if (peek().endsLine())
        return;
    const auto kindOf = [](const Token& token) -> std::string {
        const std::string name = nameOf(token);
        return name.starts_with("“") ? std::string() : name;
    };
    const std::string here = kindOf(peek());
    const std::string before = at_ > 0 ? kindOf(previous()) : std::string();
    if (here.empty() || before.empty() || previous().endsLine())
        fail("end of line");
    throw ScriptError::at(
        peek().place, ErrorNumber::cannotGoAfter, "A " + here + " can’t go after this " + before + ".");
}

void TokenStream::skipLineEnds()
{
    while (peek().kind == TokenKind::lineEnd)
        ++at_;
}

Symbol TokenStream::symbolOf(const Token& token) const
{
    if (token.kind == TokenKind::barred)
        return Symbol(token.text);
    return Symbol(source_.substr(token.place.start, token.place.end - token.place.start));
}

bool TokenStream::isName(std::size_t ahead) const noexcept
{
    const Token& token = peek(ahead);
    return token.kind == TokenKind::barred || (token.kind == TokenKind::word && !isReserved(token.text));
}

Symbol TokenStream::takeName()
{
    if (!isName())
        fail("identifier");
    return symbolOf(tokens_[at_++]);
}

} // namespace mervo::applescript
