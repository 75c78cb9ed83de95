#pragma once

#include "platform/applescript/syntax/Token.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::applescript {

/// The tokens of a script and the place that reading has reached. `take` goes on if what is asked for stands here,
/// `expect` fails if it does not: with ScriptError -2741 at the place.
class TokenStream {
public:
    /// The source must outlive it.
    explicit TokenStream(std::string_view source);

    const Token& peek(std::size_t ahead = 0) const noexcept;
    /// The token in front of the place; there must be one.
    const Token& previous() const noexcept { return tokens_[at_ - 1]; }
    /// Where the previous token ends; at the beginning of the script, `otherwise`.
    std::uint32_t endOfPrevious(std::uint32_t otherwise) const noexcept
    {
        return at_ > 0 ? previous().place.end : otherwise;
    }
    std::span<const Token> rest() const noexcept { return std::span(tokens_).subspan(at_); }
    void skip(std::size_t tokens = 1) noexcept { at_ += tokens; }

    bool isWord(std::string_view word, std::size_t ahead = 0) const noexcept { return peek(ahead).isWord(word); }
    bool isSymbol(std::string_view symbol, std::size_t ahead = 0) const noexcept
    {
        return peek(ahead).isSymbol(symbol);
    }
    /// Whether a name of the script can stand here: a word that is not reserved, or |anything|.
    bool isName(std::size_t ahead = 0) const noexcept;
    bool takeWord(std::string_view word);
    bool takeWords(std::string_view words);
    bool takeSymbol(std::string_view symbol);
    Symbol takeName();
    void expectWord(std::string_view word);
    void expectSymbol(std::string_view symbol);
    void expectLineEnd();
    void skipLineEnds();
    /// A token with the letter case of the source.
    Symbol symbolOf(const Token& token) const;

    [[noreturn]] void fail(std::string_view expected) const { failExpected(expected, peek()); }
    [[noreturn]] void failAs(std::string message) const;

    /// Looks from a place further on while it lives.
    class Lookahead {
    public:
        Lookahead(TokenStream& stream, std::size_t tokens) noexcept
            : stream_(stream)
            , tokens_(tokens)
        {
            stream_.at_ += tokens_;
        }
        Lookahead(const Lookahead&) = delete;
        Lookahead& operator=(const Lookahead&) = delete;
        ~Lookahead() { stream_.at_ -= tokens_; }

    private:
        TokenStream& stream_;
        std::size_t tokens_;
    };

private:
    std::string_view source_;
    std::vector<Token> tokens_;
    std::size_t at_ = 0;
};

} // namespace mervo::applescript
