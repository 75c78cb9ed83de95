#include "platform/applescript/syntax/ParserState.h"

#include <algorithm>

namespace mervo::applescript {

namespace {

struct Attribute {
    const char* name;
    bool TextRules::*setting; // null: accepted, without effect
};
constexpr Attribute kAttributes[] = {{"case", &TextRules::letterCase}, {"diacriticals", &TextRules::diacriticals},
    {"white space", &TextRules::whiteSpace}, {"hyphens", &TextRules::hyphens}, {"punctuation", &TextRules::punctuation},
    {"numeric strings", &TextRules::numericStrings}, {"expansion", nullptr}, {"application responses", nullptr}};

} // namespace

void Parser::run()
{
    script_.run = std::make_unique<Handler>();
    script_.run->name = Symbol("run");
    script_.run->isRun = true;
    handler_ = script_.run.get();
    skipLineEnds();
    while (peek().kind != TokenKind::end) {
        parseTopLevel();
        skipLineEnds();
    }
}

/// { NL | use | property | global | handler | statement }
void Parser::parseTopLevel()
{
    if (isWord("on") || (isWord("to") && isName(1)))
        return parseHandler();
    if (isWord("use") && !isSymbol("(", 1))
        return parseUse();
    if (isWord("property") || isWord("prop"))
        return parseProperty();
    if (isWord("global")) {
        parseDeclaration(topGlobals_);
        script_.run->globals = topGlobals_;
        return;
    }
    if (script_.hasExplicitRun)
        fail("a handler, since there is an “on run”,");
    parseStatement(handler_->body);
}

/// "use" ( "scripting additions" | "AppleScript" [ "version" text ] | "framework" text ) NL
void Parser::parseUse()
{
    skip();
    if (takeWord("applescript")) {
        if (takeWord("version") && peek().kind != TokenKind::text)
            fail("string");
        if (peek().kind == TokenKind::text)
            skip();
    } else if (takeWord("framework")) {
        if (peek().kind != TokenKind::text)
            fail("string");
        skip();
    } else if (!takeWords("scripting additions")) {
        fail("“scripting additions”, “AppleScript” or “framework”");
    }
    expectLineEnd();
}

/// ( "property" | "prop" ) ident ":" expr NL
void Parser::parseProperty()
{
    skip();
    auto property = std::make_unique<Property>();
    property->variable.name = takeName();
    expectSymbol(":");
    property->value = parseExpression();
    expectLineEnd();
    script_.properties.push_back(std::move(property));
}

/// ( "global" | "local" ) ident { "," ident }
void Parser::parseDeclaration(std::vector<Symbol>& names)
{
    skip();
    do {
        names.push_back(takeName());
    } while (takeSymbol(","));
    expectLineEnd();
}

/// ident | "{" pattern { "," pattern } "}"
ExprPtr Parser::parsePattern()
{
    const Nesting nesting(*this);
    if (!isSymbol("{")) {
        auto variable = make<Variable>();
        const Symbol name = takeName();
        use(variable->use, name);
        handler_->locals.push_back(name);
        return variable;
    }
    auto list = make<ListExpr>();
    skip();
    do {
        list->items.push_back(parsePattern());
    } while (takeSymbol(","));
    expectSymbol("}");
    return list;
}

void Parser::parseParameters(Handler& handler)
{
    if (!takeSymbol("(")) {
        if (isName() || isSymbol("{"))
            handler.parameters.push_back(parsePattern());
        return;
    }
    if (takeSymbol(")"))
        return;
    do {
        handler.parameters.push_back(parsePattern());
    } while (takeSymbol(","));
    expectSymbol(")");
}

/// ( "on" | "to" ) ident ( "(" [ pattern { "," pattern } ] ")" | [ pattern ] ) NL block "end" [ ident ] NL
void Parser::parseHandler()
{
    Handler* const outer = handler_;
    const Token& start = peek();
    skip();
    auto handler = std::make_unique<Handler>();
    handler->place = start.place;
    handler->globals = topGlobals_;
    const Token& nameToken = peek();
    handler->name = takeName();
    handler->isRun = nameToken.text == "run";
    handler_ = handler.get();
    parseParameters(*handler);
    expectLineEnd();
    handler->body = parseBlock();
    expectEnd({nameToken.text});
    handler_ = outer;
    if (!handler->isRun) {
        script_.handlers[handler->name.number()] = std::move(handler);
        return;
    }
    if (script_.hasExplicitRun || !script_.run->body.empty())
        failExpected("one run handler: “on run” and statements outside of it exclude each other,", start);
    script_.hasExplicitRun = true;
    script_.run = std::move(handler);
    handler_ = script_.run.get();
}

/// Statements up to what ends a block: `end`, `else`, `on error`.
Block Parser::parseBlock()
{
    const Nesting nesting(*this);
    Block block;
    for (skipLineEnds(); !isWord("end") && !isWord("else") && matchWords(rest(), "on error") == 0; skipLineEnds()) {
        if (peek().kind == TokenKind::end || isWord("on") || isWord("to"))
            fail("“end”");
        parseStatement(block);
    }
    return block;
}

/// "end" [ NAME ]: just `end` will do, a wrong name will not.
void Parser::expectEnd(std::initializer_list<std::string_view> names)
{
    expectWord("end");
    for (const std::string_view name : names) {
        if (takeWords(name)) {
            expectLineEnd();
            return;
        }
    }
    if (peek().kind == TokenKind::barred && peek().text == *names.begin())
        skip();
    if (!peek().endsLine())
        fail("“" + std::string(*names.begin()) + "”");
}

void Parser::parseStatement(Block& block)
{
    const Nesting nesting(*this);
    if (matchWords(rest(), "using terms from") > 0)
        return parseTermsFrom(block);
    if (isWord("global"))
        return parseDeclaration(handler_->globals);
    if (isWord("local"))
        return parseDeclaration(handler_->locals);
    if (isWord("script") && (isName(1) || peek(1).endsLine()))
        failUnknown("Script objects");
    if (isWord("transaction") || matchWords(rest(), "with transaction") > 0)
        failUnknown("Transactions");
    const Place start = peek().place;
    auto statement = parseCompound();
    if (!statement)
        statement = parseSimple();
    statement->place = {start.start, endOfPrevious(start.end)};
    expectLineEnd();
    block.push_back(std::move(statement));
}

/// What has a block of its own; null at anything else.
std::unique_ptr<Statement> Parser::parseCompound()
{
    if (isWord("if"))
        return parseIf();
    if (isWord("repeat"))
        return parseRepeat();
    if (isWord("tell"))
        return parseTell();
    if (isWord("try") && peek(1).endsLine())
        return parseTry();
    if (isWord("considering") || isWord("ignoring"))
        return parseConsider();
    if (matchWords(rest(), "with timeout") > 0)
        return parseTimeout();
    return nullptr;
}

std::unique_ptr<Statement> Parser::parseSimple()
{
    const Nesting nesting(*this);
    const Place start = peek().place;
    std::unique_ptr<Statement> statement;
    if (isWord("set")) {
        statement = parseSet();
    } else if (isWord("copy")) {
        statement = parseCopy();
    } else if (isWord("return")) {
        statement = parseReturn();
    } else if (isWord("exit")) {
        statement = parseExit();
    } else if (isWord("error")) {
        statement = parseError();
    } else if (isWord("if")) {
        statement = parseIf();
    } else if (isWord("tell")) {
        statement = parseTell();
    } else {
        auto expression = std::make_unique<ExpressionStatement>();
        expression->expression = parseExpression();
        statement = std::move(expression);
    }
    statement->place = {start.start, previous().place.end};
    return statement;
}

/// target = ident | reference | insertion | "{" target { "," target } "}"
ExprPtr Parser::parseAssignable()
{
    const Nesting nesting(*this);
    if (isSymbol("{")) {
        auto list = make<ListExpr>();
        skip();
        do {
            list->items.push_back(parseAssignable());
            adopt(*list, list->items.back());
        } while (takeSymbol(","));
        expectSymbol("}");
        return list;
    }
    if (startsInsertion())
        return parseInsertion();
    const Token& start = peek();
    ExprPtr target = parsePostfix();
    const bool isPlace = target->kind == ExprKind::variable || target->kind == ExprKind::property
        || target->kind == ExprKind::element || target->kind == ExprKind::filter;
    if (!isPlace)
        failExpected("a variable or a reference", start);
    return target;
}

std::unique_ptr<Statement> Parser::parseSet()
{
    auto statement = std::make_unique<SetStatement>();
    skip();
    statement->target = parseAssignable();
    expectWord("to");
    statement->value = parseExpression();
    return statement;
}

std::unique_ptr<Statement> Parser::parseCopy()
{
    auto statement = std::make_unique<SetStatement>();
    skip();
    statement->isCopy = true;
    statement->value = parseExpression();
    expectWord("to");
    statement->target = parseAssignable();
    return statement;
}

std::unique_ptr<Statement> Parser::parseReturn()
{
    auto statement = std::make_unique<ReturnStatement>();
    skip();
    if (!peek().endsLine() && !isWord("else"))
        statement->value = parseExpression();
    return statement;
}

std::unique_ptr<Statement> Parser::parseExit()
{
    const Token& start = peek();
    skip();
    takeWord("repeat");
    if (loops_ == 0) {
        throw ScriptError::at(
            start.place, ErrorNumber::exitOutsideLoop, "“exit repeat” stands outside of any “repeat”.");
    }
    return std::make_unique<ExitStatement>();
}

/// "error" [ expr ] { ( "number" | "from" | "partial result" | "to" ) expr }
std::unique_ptr<Statement> Parser::parseError()
{
    auto statement = std::make_unique<ErrorStatement>();
    skip();
    if (!peek().endsLine() && !isWord("number") && !isWord("from") && !isWord("to") && !isWord("partial")
        && !isWord("else"))
        statement->message = parseExpression();
    for (;;) {
        ExprPtr* argument = takeWord("number") ? &statement->number
            : takeWord("from")                 ? &statement->offender
            : takeWords("partial result")      ? &statement->partialResult
            : takeWord("to")                   ? &statement->expectedClass
                                               : nullptr;
        if (!argument)
            return statement;
        if (*argument)
            failAs("A part of “error” stands here twice.");
        *argument = parseExpression();
    }
}

/// "if" expr "then" simple [ "else" simple ], or the form with blocks
std::unique_ptr<Statement> Parser::parseIf()
{
    auto statement = std::make_unique<IfStatement>();
    skip();
    ExprPtr condition = parseExpression();
    const bool hasThen = takeWord("then");
    if (hasThen && !peek().endsLine()) {
        statement->branches.emplace_back(std::move(condition), Block{});
        statement->branches.back().second.push_back(parseSimple());
        if (takeWord("else"))
            statement->otherwise.push_back(parseSimple());
        return statement;
    }
    if (!hasThen && !peek().endsLine())
        fail("“then”");
    statement->branches.emplace_back(std::move(condition), parseBlock());
    while (takeWord("else")) {
        if (!takeWord("if")) {
            expectLineEnd();
            statement->otherwise = parseBlock();
            break;
        }
        ExprPtr next = parseExpression();
        takeWord("then");
        expectLineEnd();
        statement->branches.emplace_back(std::move(next), parseBlock());
    }
    expectEnd({"if"});
    return statement;
}

/// "repeat" [ "while" expr | "until" expr | expr "times" | "with" ... ] NL block "end" [ "repeat" ]
std::unique_ptr<Statement> Parser::parseRepeat()
{
    auto statement = std::make_unique<RepeatStatement>();
    skip();
    if (takeWord("while")) {
        statement->form = RepeatStatement::Form::whileTrue;
        statement->first = parseExpression();
    } else if (takeWord("until")) {
        statement->form = RepeatStatement::Form::untilTrue;
        statement->first = parseExpression();
    } else if (takeWord("with")) {
        parseRepeatWith(*statement);
    } else if (!peek().endsLine()) {
        statement->form = RepeatStatement::Form::times;
        statement->first = parseExpression();
        expectWord("times");
    }
    expectLineEnd();
    ++loops_;
    statement->body = parseBlock();
    --loops_;
    expectEnd({"repeat"});
    return statement;
}

/// ident "from" expr "to" expr [ "by" expr ] | ident "in" expr
void Parser::parseRepeatWith(RepeatStatement& repeat)
{
    use(repeat.variable, takeName());
    if (takeWord("in")) {
        repeat.form = RepeatStatement::Form::list;
        repeat.first = parseExpression();
        return;
    }
    if (!takeWord("from"))
        fail("“in” or “from”");
    repeat.form = RepeatStatement::Form::range;
    repeat.first = parseExpression();
    expectWord("to");
    repeat.last = parseExpression();
    if (takeWord("by"))
        repeat.step = parseExpression();
}

/// "tell" expr ( "to" simple | NL block "end" [ "tell" ] ); a named application brings its terms
std::unique_ptr<Statement> Parser::parseTell()
{
    auto statement = std::make_unique<TellStatement>();
    skip();
    statement->target = parsePostfix();
    const bool bringsTerms = statement->target->kind == ExprKind::application;
    if (bringsTerms)
        enterTerms(as<ApplicationExpr>(*statement->target));
    if (takeWord("to")) {
        statement->body.push_back(parseSimple());
    } else {
        if (!peek().endsLine())
            fail("“to” or end of line");
        statement->body = parseBlock();
        expectEnd({"tell"});
    }
    if (bringsTerms)
        scopes_.pop_back();
    return statement;
}

void Parser::parseBinding(std::unique_ptr<VariableUse>& place)
{
    if (place)
        failAs("A part of “on error” stands here twice.");
    place = std::make_unique<VariableUse>();
    use(*place, takeName());
}

/// "try" NL block [ "on error" [ ident ] { catch } NL block ] "end" [ "try" | "error" ]
std::unique_ptr<Statement> Parser::parseTry()
{
    auto statement = std::make_unique<TryStatement>();
    skip();
    statement->body = parseBlock();
    if (takeWords("on error")) {
        statement->hasHandler = true;
        parseCatch(*statement);
        expectLineEnd();
        statement->handler = parseBlock();
    }
    expectEnd({"try", "error"});
    return statement;
}

/// "number" ( ident | integer ) | "from" ident | "partial result" ident | "to" ident
void Parser::parseCatch(TryStatement& statement)
{
    if (isName() && !isWord("number") && !isWord("partial"))
        parseBinding(statement.message);
    while (!peek().endsLine()) {
        if (takeWord("number")) {
            const bool isNegative = isSymbol("-") && peek(1).kind == TokenKind::integer;
            if (isNegative)
                skip();
            if (peek().kind == TokenKind::integer && peek().number < 1e9) {
                statement.hasNumberLiteral = true;
                statement.onlyNumber = static_cast<std::int64_t>(peek().number) * (isNegative ? -1 : 1);
                skip();
            } else {
                parseBinding(statement.number);
            }
        } else if (takeWord("from")) {
            parseBinding(statement.offender);
        } else if (takeWords("partial result")) {
            parseBinding(statement.partialResult);
        } else if (takeWord("to")) {
            parseBinding(statement.expectedClass);
        } else {
            fail("“number”, “from”, “partial result”, “to” or end of line");
        }
    }
}

/// attr { ( "," | "and" ) attr }
void Parser::parseAttributes(ConsiderStatement& statement, bool isConsidering)
{
    do {
        const auto known = std::find_if(std::begin(kAttributes), std::end(kAttributes),
            [&](const Attribute& attribute) { return takeWords(attribute.name); });
        if (known == std::end(kAttributes))
            fail("case, diacriticals, white space, hyphens, punctuation, numeric strings or application responses");
        if (known->setting)
            statement.changes.emplace_back(known->setting, isConsidering);
        if (isSymbol(",") && isWord("and", 1))
            skip();
    } while (takeSymbol(",") || takeWord("and"));
}

/// ( "considering" | "ignoring" ) attrs [ "but" ( "ignoring" | "considering" ) attrs ] NL block "end" [ ... ]
std::unique_ptr<Statement> Parser::parseConsider()
{
    auto statement = std::make_unique<ConsiderStatement>();
    const std::string opening = peek().text;
    const bool isConsidering = takeWord("considering");
    if (!isConsidering)
        skip();
    parseAttributes(*statement, isConsidering);
    if (takeWord("but")) {
        const bool butConsidering = takeWord("considering");
        if (!butConsidering)
            expectWord("ignoring");
        parseAttributes(*statement, butConsidering);
    }
    expectLineEnd();
    statement->body = parseBlock();
    expectEnd({opening});
    return statement;
}

/// "with timeout" [ "of" ] expr [ "second" | "seconds" ] NL block "end" [ "timeout" ]
std::unique_ptr<Statement> Parser::parseTimeout()
{
    auto statement = std::make_unique<TimeoutStatement>();
    skip(2);
    takeWord("of");
    statement->seconds = parseExpression();
    if (!takeWord("seconds"))
        takeWord("second");
    expectLineEnd();
    statement->body = parseBlock();
    expectEnd({"timeout"});
    return statement;
}

/// "using terms from" expr NL block "end" [ "using terms from" ]: only the terms change
void Parser::parseTermsFrom(Block& block)
{
    skip(3);
    if ((!isWord("application") && !isWord("app")) || peek(isWord("id", 1) ? 2 : 1).kind != TokenKind::text)
        fail("“application” and its name");
    const ExprPtr application = parseApplication();
    enterTerms(as<ApplicationExpr>(*application));
    expectLineEnd();
    for (auto& statement : parseBlock())
        block.push_back(std::move(statement));
    scopes_.pop_back();
    expectEnd({"using terms from"});
    expectLineEnd();
}

} // namespace mervo::applescript
