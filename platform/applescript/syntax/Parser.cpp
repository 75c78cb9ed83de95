#include "platform/applescript/syntax/Parser.h"

#include "platform/applescript/syntax/ParserState.h"
#include "platform/applescript/syntax/Resolver.h"

namespace mervo::applescript {

std::unique_ptr<Script> parse(std::string source, ApplicationRegistry& registry)
{
    auto script = std::make_unique<Script>();
    script->source = std::move(source);
    Parser(*script, registry).run();
    resolveNames(*script);
    return script;
}

Parser::Parser(Script& script, ApplicationRegistry& registry)
    : script_(script)
    , registry_(registry)
    , tokens_(tokensOf(script.source))
{
}

Parser::Nesting::Nesting(Parser& parser)
    : parser_(parser)
{
    if (++parser_.nesting_ > kDeepestNesting) {
        --parser_.nesting_;
        parser_.failTooDeep();
    }
}

void Parser::failAs(std::string message) const
{
    ScriptError error(ErrorNumber::syntax, std::move(message));
    error.isPlaced = true;
    error.place = peek().place;
    throw error;
}

const Token& Parser::peek(std::size_t ahead) const noexcept
{
    const std::size_t index = at_ + ahead;
    return index < tokens_.size() ? tokens_[index] : tokens_.back();
}

std::span<const Token> Parser::rest() const noexcept
{
    return std::span(tokens_).subspan(at_);
}

bool Parser::takeWord(std::string_view word)
{
    if (!isWord(word))
        return false;
    ++at_;
    return true;
}

bool Parser::takeWords(std::string_view words)
{
    const std::size_t count = matchWords(rest(), words);
    at_ += count;
    return count > 0;
}

bool Parser::takeSymbol(std::string_view symbol)
{
    if (!isSymbol(symbol))
        return false;
    ++at_;
    return true;
}

void Parser::expectWord(std::string_view word)
{
    if (!takeWord(word))
        fail("“" + std::string(word) + "”");
}

void Parser::expectSymbol(std::string_view symbol)
{
    if (!takeSymbol(symbol))
        fail("“" + std::string(symbol) + "”");
}

/// Two operands side by side have an error of their own.
void Parser::expectLineEnd()
{
    if (peek().endsLine())
        return;
    const auto kindOf = [](const Token& token) -> std::string {
        const std::string name = nameOf(token);
        return name.starts_with("“") ? std::string() : name;
    };
    const std::string here = kindOf(peek());
    const std::string before = at_ > 0 ? kindOf(tokens_[at_ - 1]) : std::string();
    if (here.empty() || before.empty() || tokens_[at_ - 1].endsLine())
        fail("end of line");
    ScriptError error(ErrorNumber::cannotGoAfter, "A " + here + " can’t go after this " + before + ".");
    error.isPlaced = true;
    error.place = peek().place;
    throw error;
}

void Parser::skipLineEnds()
{
    while (peek().kind == TokenKind::lineEnd)
        ++at_;
}

Symbol Parser::symbolOf(const Token& token) const
{
    if (token.kind == TokenKind::barred)
        return Symbol(token.text);
    return Symbol(std::string_view(script_.source).substr(token.place.start, token.place.end - token.place.start));
}

bool Parser::isName(std::size_t ahead) const
{
    const Token& token = peek(ahead);
    return token.kind == TokenKind::barred || (token.kind == TokenKind::word && !isReserved(token.text));
}

Symbol Parser::takeName()
{
    if (!isName())
        fail("identifier");
    return symbolOf(tokens_[at_++]);
}

Parser::Match Parser::match() const
{
    const TermTable::Found language = TermTable::language().longest(rest());
    TermTable::Found application;
    if (dictionary())
        application = tables_.at(dictionary()).longest(rest());
    Match found;
    found.words = std::max(language.words, application.words);
    if (found.words == 0)
        return found;
    if (application.words == found.words)
        found.application = application.meaning;
    if (language.words == found.words)
        found.language = language.meaning;
    return found;
}

Parser::Match Parser::match(std::size_t words) const
{
    Match found;
    found.words = words;
    found.language = TermTable::language().exactly(rest(), words).meaning;
    if (dictionary())
        found.application = tables_.at(dictionary()).exactly(rest(), words).meaning;
    return found;
}

bool Parser::isOfOrIn() const noexcept
{
    return isWord("of") || (isWord("in") && !flags_.stopsAtIn);
}

ExprPtr& Parser::adopt(Expr& parent, ExprPtr& child) const
{
    if (child && child->depth >= parent.depth)
        parent.depth = static_cast<std::uint16_t>(child->depth + 1);
    if (parent.depth > kDeepestTree)
        failTooDeep();
    return child;
}

ExprPtr Parser::makeLiteral(Value value)
{
    auto literal = make<Literal>();
    literal->value = std::move(value);
    return literal;
}

ExprPtr Parser::makeTarget(TargetExpr::Which which)
{
    auto target = make<TargetExpr>();
    target->which = which;
    return target;
}

void Parser::use(VariableUse& variable, Symbol name)
{
    variable.name = name;
    handler_->uses.push_back(&variable);
}

void Parser::enterTerms(const ApplicationExpr& application)
{
    const Dictionary* terms = nullptr;
    if (application.name->kind == ExprKind::literal && as<Literal>(*application.name).value.is(Kind::text)) {
        const std::string_view name = as<Literal>(*application.name).value.view();
        if (auto* entry = application.isById ? registry_.findByBundleId(name) : registry_.findByName(name))
            terms = &entry->dictionary();
    }
    if (terms && !tables_.contains(terms))
        tables_.emplace(terms, TermTable(*terms));
    scopes_.push_back(terms);
}

} // namespace mervo::applescript
