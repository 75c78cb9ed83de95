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
    : TokenStream(script.source)
    , script_(script)
    , registry_(registry)
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

void Parser::adopt(Expr& parent, ExprPtr& place, ExprPtr child) const
{
    place = std::move(child);
    adopt(parent, place);
}

ExprPtr* Parser::containerOf(Expr& part) noexcept
{
    if (part.kind == ExprKind::property)
        return &static_cast<PropertyExpr&>(part).container;
    return part.kind == ExprKind::element ? &static_cast<ElementExpr&>(part).container : nullptr;
}

ExprPtr Parser::makeLiteral(Value value)
{
    auto literal = make<Literal>();
    literal->value = std::move(value);
    return literal;
}

ExprPtr Parser::takeLiteral(Value value, std::size_t words)
{
    ExprPtr literal = makeLiteral(std::move(value));
    skip(words);
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
