#include "platform/applescript/syntax/Token.h"
#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>

namespace mervo::applescript {

namespace {

constexpr auto kReserved =
    std::to_array<std::string_view>({"after", "and", "as", "before", "begins", "but", "by", "considering", "contains",
        "copy", "div", "does", "doesn't", "else", "end", "ends", "equal", "equals", "error", "every", "exit", "false",
        "from", "global", "if", "ignoring", "in", "into", "is", "isn't", "it", "its", "local", "me", "mod", "my", "not",
        "of", "on", "or", "prop", "property", "repeat", "return", "set", "starts", "tell", "the", "then", "through",
        "thru", "timeout", "to", "transaction", "true", "try", "until", "where", "while", "whose", "with", "without"});

bool isLetter(char c) noexcept
{
    return platform::ascii::isLetter(c) || c == '_';
}

using platform::ascii::isDigit;
using platform::ascii::lowered;

/// One sign of more than one byte or of one, and its ASCII spelling.
struct Sign {
    std::string_view written;
    std::string_view meant;
};
constexpr Sign kSigns[] = {{"/=", "/="}, {"<=", "<="}, {">=", ">="}, {"≠", "/="}, {"≤", "<="}, {"≥", ">="}, {"÷", "/"},
    {"×", "*"}, {"=", "="}, {"<", "<"}, {">", ">"}, {"+", "+"}, {"-", "-"}, {"*", "*"}, {"/", "/"}, {"^", "^"},
    {"&", "&"}, {"(", "("}, {")", ")"}, {"{", "{"}, {"}", "}"}, {",", ","}, {":", ":"}};

class Lexer {
public:
    explicit Lexer(std::string_view source)
        : source_(source)
    {
    }

    std::vector<Token> run();

private:
    bool startsWith(std::string_view text) const noexcept { return source_.substr(at_).starts_with(text); }
    char peek(std::size_t ahead = 0) const noexcept
    {
        return at_ + ahead < source_.size() ? source_[at_ + ahead] : '\0';
    }
    void add(TokenKind kind, std::size_t start, std::string text = {}, double number = 0);
    [[noreturn]] void failOpen(std::size_t start, const char* closing) const;
    void skipLine();
    void skipComment();
    void continueLine();
    void readWord();
    void readNumber();
    void readText();
    void readUntil(TokenKind kind, std::string_view opening, std::string_view closing);
    void readSign();

    std::string_view source_;
    std::size_t at_ = 0;
    std::vector<Token> tokens_;
};

void Lexer::add(TokenKind kind, std::size_t start, std::string text, double number)
{
    tokens_.push_back(
        {kind, {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(at_)}, std::move(text), number});
}

void Lexer::failOpen(std::size_t start, const char* closing) const
{
    ScriptError error(ErrorNumber::syntax, std::string("Expected “") + closing + "” but found end of script.");
    error.isPlaced = true;
    error.place = {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(source_.size())};
    throw error;
}

void Lexer::skipLine()
{
    while (at_ < source_.size() && peek() != '\n' && peek() != '\r')
        ++at_;
}

void Lexer::skipComment()
{
    const std::size_t start = at_;
    int depth = 0;
    do {
        if (at_ >= source_.size())
            failOpen(start, "*)");
        if (startsWith("(*")) {
            ++depth;
            at_ += 2;
        } else if (startsWith("*)")) {
            --depth;
            at_ += 2;
        } else {
            ++at_;
        }
    } while (depth > 0);
}

void Lexer::continueLine()
{
    const std::size_t start = at_;
    at_ += std::string_view("¬").size();
    while (peek() == ' ' || peek() == '\t')
        ++at_;
    if (peek() != '\r' && peek() != '\n') {
        add(TokenKind::symbol, start, "¬");
        failExpected("expression", tokens_.back());
    }
    at_ += startsWith("\r\n") ? 2 : 1;
}

void Lexer::readWord()
{
    const std::size_t start = at_;
    while (isLetter(peek()) || isDigit(peek()))
        ++at_;
    std::string word = lowered(source_.substr(start, at_ - start));
    if ((word == "isn" || word == "doesn") && (startsWith("'t") || startsWith("'T"))) {
        at_ += 2;
        word += "'t";
    }
    add(TokenKind::word, start, std::move(word));
}

void Lexer::readNumber()
{
    const std::size_t start = at_;
    const auto skipDigits = [&] {
        while (isDigit(peek()))
            ++at_;
    };
    skipDigits();
    bool isReal = false;
    if (peek() == '.' && isDigit(peek(1))) {
        isReal = true;
        ++at_;
        skipDigits();
    }
    const std::size_t sign = peek(1) == '+' || peek(1) == '-' ? 2 : 1;
    if ((peek() == 'e' || peek() == 'E') && isDigit(peek(sign))) {
        isReal = true;
        at_ += sign;
        skipDigits();
    }
    double value = 0;
    if (std::from_chars(source_.data() + start, source_.data() + at_, value).ec == std::errc::result_out_of_range) {
        add(TokenKind::real, start);
        failExpected("a number that is not too large", tokens_.back());
    }
    const std::string suffix = lowered(source_.substr(at_, 2));
    if (!isReal && (suffix == "st" || suffix == "nd" || suffix == "rd" || suffix == "th") && !isLetter(peek(2))) {
        at_ += 2;
        add(TokenKind::ordinal, start, {}, value);
        return;
    }
    add(isReal ? TokenKind::real : TokenKind::integer, start, {}, value);
}

void Lexer::readText()
{
    const std::size_t start = at_++;
    std::string text;
    for (;; ++at_) {
        if (at_ >= source_.size())
            failOpen(start, "\"");
        char c = peek();
        if (c == '"')
            break;
        if (c == '\\') {
            ++at_;
            const char escaped = peek();
            c = escaped == 'n' ? '\n' : escaped == 'r' ? '\r' : escaped == 't' ? '\t' : escaped;
            if (at_ >= source_.size())
                failOpen(start, "\"");
            if (c == escaped && c != '"' && c != '\\') {
                add(TokenKind::symbol, at_ - 1, "\\" + std::string(1, c));
                failExpected("“\\n”, “\\r”, “\\t”, “\\\"” or “\\\\”", tokens_.back());
            }
        }
        text += c;
    }
    ++at_;
    add(TokenKind::text, start, std::move(text));
}

void Lexer::readUntil(TokenKind kind, std::string_view opening, std::string_view closing)
{
    const std::size_t start = at_;
    const std::size_t from = at_ + opening.size();
    const std::size_t end = source_.find(closing, from);
    if (end == std::string_view::npos
        || source_.substr(from, end - from).find_first_of("\r\n") != std::string_view::npos)
        failOpen(start, closing.data());
    at_ = end + closing.size();
    add(kind, start, std::string(source_.substr(from, end - from)));
}

void Lexer::readSign()
{
    const std::size_t start = at_;
    if ((startsWith("'s") || startsWith("'S")) && !isLetter(peek(2)) && !isDigit(peek(2))) {
        at_ += 2;
        add(TokenKind::symbol, start, "'s");
        return;
    }
    for (const Sign& sign : kSigns) {
        if (startsWith(sign.written)) {
            at_ += sign.written.size();
            add(TokenKind::symbol, start, std::string(sign.meant));
            return;
        }
    }
    ++at_;
    while (at_ < source_.size() && (static_cast<unsigned char>(peek()) & 0xC0) == 0x80)
        ++at_;
    add(TokenKind::symbol, start, std::string(source_.substr(start, at_ - start)));
    failExpected("expression", tokens_.back());
}

std::vector<Token> Lexer::run()
{
    if (startsWith("\xEF\xBB\xBF"))
        at_ += 3;
    while (at_ < source_.size()) {
        const char c = peek();
        const std::size_t start = at_;
        if (c == ' ' || c == '\t') {
            ++at_;
        } else if (startsWith("\xC2\xA0")) { // no-break space
            at_ += 2;
        } else if (c == '\n' || c == '\r') {
            at_ += startsWith("\r\n") ? 2 : 1;
            add(TokenKind::lineEnd, start);
        } else if (c == '#' || startsWith("--")) {
            skipLine();
        } else if (startsWith("(*")) {
            skipComment();
        } else if (startsWith("¬")) {
            continueLine();
        } else if (c == '"') {
            readText();
        } else if (c == '|') {
            readUntil(TokenKind::barred, "|", "|");
        } else if (startsWith("«")) {
            readUntil(TokenKind::raw, "«", "»");
        } else if (isLetter(c)) {
            readWord();
        } else if (isDigit(c) || (c == '.' && isDigit(peek(1)))) {
            readNumber();
        } else {
            readSign();
        }
    }
    add(TokenKind::end, at_);
    return std::move(tokens_);
}

} // namespace

std::vector<Token> tokensOf(std::string_view source)
{
    return Lexer(source).run();
}

bool isReserved(std::string_view word) noexcept
{
    return std::binary_search(kReserved.begin(), kReserved.end(), word);
}

std::string nameOf(const Token& token)
{
    switch (token.kind) {
    case TokenKind::word:
        return isReserved(token.text) ? "“" + token.text + "”" : "identifier";
    case TokenKind::barred:
        return "identifier";
    case TokenKind::text:
        return "string";
    case TokenKind::integer:
    case TokenKind::real:
    case TokenKind::ordinal:
        return "number";
    case TokenKind::raw:
        return "“«" + token.text + "»”";
    case TokenKind::symbol:
        return "“" + token.text + "”";
    case TokenKind::lineEnd:
        return "end of line";
    case TokenKind::end:
        return "end of script";
    }
    return {};
}

void failExpected(std::string_view expected, const Token& found)
{
    throw ScriptError::at(
        found.place, ErrorNumber::syntax, "Expected " + std::string(expected) + " but found " + nameOf(found) + ".");
}

std::size_t matchWords(std::span<const Token> tokens, std::string_view words) noexcept
{
    std::size_t count = 0;
    std::size_t start = 0;
    while (start <= words.size()) {
        const std::size_t end = std::min(words.find(' ', start), words.size());
        if (count >= tokens.size() || !tokens[count].isWord(words.substr(start, end - start)))
            return 0;
        ++count;
        start = end + 1;
    }
    return count;
}

} // namespace mervo::applescript
