#include "platform/applescript/syntax/ParserState.h"
#include "platform/ascii.h"

namespace mervo::applescript {

namespace {

constexpr int kOperandLevel = 7; // of `round` and `offset`: anything up to a comparison

constexpr const char* kRoundings[] = {"up", "down", "toward zero", "to nearest", "as taught in school"};

} // namespace

/// Whether an argument can begin here.
bool Parser::startsOperand() const
{
    const Token& token = peek();
    switch (token.kind) {
    case TokenKind::lineEnd:
    case TokenKind::end:
        return false;
    case TokenKind::symbol:
        return token.text == "(" || token.text == "{" || token.text == "-";
    case TokenKind::word:
        return !isReserved(token.text) || token.text == "it" || token.text == "me" || token.text == "my"
            || token.text == "its" || token.text == "every" || token.text == "the" || token.text == "true"
            || token.text == "false" || token.text == "not" || token.text == "return";
    default:
        return true;
    }
}

/// The value of a label: an expression or a place to insert.
ExprPtr Parser::parseArgument()
{
    if (startsInsertion())
        return parseInsertion();
    return parseExpression();
}

ExprPtr Parser::parseCommand(const Match& found)
{
    const Nesting nesting(*this);
    const Token& token = peek();
    if (found.application && found.application->commandTerm) {
        const CommandTerm& command = *found.application->commandTerm;
        skip(found.words);
        ExprPtr node = parseDictionaryCommand(command);
        node->place.start = token.place.start;
        return finish(std::move(node));
    }
    const LanguageCommand command = found.language->command;
    const bool belongsToApplications = command == LanguageCommand::make || command == LanguageCommand::remove
        || command == LanguageCommand::move || command == LanguageCommand::duplicate
        || command == LanguageCommand::close;
    if (belongsToApplications && !dictionary()) {
        if (isSymbol("(", found.words) || isOfOrIn())
            return parseName();
        failExpected("a command of the language or a “tell application” around it", token);
    }
    skip(found.words);
    ExprPtr node = parseLanguageCommand(command);
    node->place.start = token.place.start;
    return finish(std::move(node));
}

/// The longest label of the command that stands here; null when none does.
Parser::Label Parser::matchLabel(const CommandTerm& command) const
{
    Label longest;
    for (const ParameterTerm& parameter : command.parameters) {
        if (const std::size_t words = matchWords(rest(), platform::ascii::lowered(parameter.label));
            words > longest.words)
            longest = {&parameter, words};
    }
    return longest;
}

/// ( "with" | "without" ) label { ( "," | "and" ) label }
bool Parser::parseSwitches(CommandExpr& node, const CommandTerm& command)
{
    if (!isWord("with") && !isWord("without"))
        return false;
    const bool value = isWord("with");
    skip();
    do {
        const Label label = matchLabel(command);
        if (!label.parameter)
            fail("a parameter of “" + command.name + "”");
        skip(label.words);
        node.arguments.emplace_back(label.parameter->id, makeLiteral(Value::boolean(value)));
    } while (takeSymbol(",") || takeWord("and"));
    return true;
}

void Parser::parseArguments(CommandExpr& node, const CommandTerm& command)
{
    for (;;) {
        if (const Label label = matchLabel(command); label.parameter) {
            skip(label.words);
            adopt(node, node.arguments.emplace_back(label.parameter->id, parseArgument()).second);
        } else if (!parseSwitches(node, command)) {
            return;
        }
    }
}

/// cmdname [ expr ] { paramlabel ( expr | insertion ) | ( "with" | "without" ) labels }
ExprPtr Parser::parseDictionaryCommand(const CommandTerm& command)
{
    auto node = make<CommandExpr>();
    node->dictionary = dictionary();
    node->commandTerm = &command;
    bool hasIn = false;
    for (const ParameterTerm& parameter : command.parameters)
        hasIn = hasIn || parameter.label == "in";
    if (command.direct != CommandTerm::Direct::none && !matchLabel(command).parameter && startsOperand()) {
        const WithFlags flags(*this, {.stopsAtIn = hasIn || flags_.stopsAtIn});
        adopt(*node, node->direct, parseArgument());
    }
    parseArguments(*node, command);
    return node;
}

void Parser::parseLabelled(CommandExpr& node, std::string_view label, ExprPtr argument)
{
    adopt(node, node.labelled.emplace_back(Symbol(label), std::move(argument)).second);
}

ExprPtr Parser::parseLanguageCommand(LanguageCommand command)
{
    auto node = make<CommandExpr>();
    node->command = command;
    node->dictionary = dictionary();
    switch (command) {
    case LanguageCommand::none:
    case LanguageCommand::currentDate:
        break;
    case LanguageCommand::make:
        parseMake(*node);
        break;
    case LanguageCommand::offset:
        parseOffset(*node);
        break;
    case LanguageCommand::round:
        parseRound(*node);
        break;
    case LanguageCommand::randomNumber:
        parseRandomNumber(*node);
        break;
    case LanguageCommand::count:
        if (takeWord("of") || takeWord("in")) {
            adopt(*node, node->direct, parsePostfix());
        } else {
            adopt(*node, node->direct, parseBinary(kOperandLevel));
        }
        break;
    case LanguageCommand::exists:
        adopt(*node, node->direct, parsePostfix());
        break;
    case LanguageCommand::pathTo:
        if (!takeWords("home folder"))
            fail("“home folder”");
        break;
    case LanguageCommand::activate:
    case LanguageCommand::launch:
    case LanguageCommand::quit:
    case LanguageCommand::reopen:
    case LanguageCommand::run:
        if (startsOperand() && !isWord("saving"))
            adopt(*node, node->direct, parsePostfix());
        break;
    case LanguageCommand::close:
    case LanguageCommand::delay:
    case LanguageCommand::log:
        if (startsOperand())
            adopt(*node, node->direct, parseExpression());
        break;
    case LanguageCommand::doShellScript:
    case LanguageCommand::duplicate:
    case LanguageCommand::get:
    case LanguageCommand::move:
    case LanguageCommand::remove:
        if (!startsOperand())
            fail("expression");
        adopt(*node, node->direct, parseExpression());
        break;
    }
    if ((command == LanguageCommand::move || command == LanguageCommand::duplicate) && takeWord("to"))
        parseLabelled(*node, "to", parseArgument());
    if ((command == LanguageCommand::close || command == LanguageCommand::quit) && takeWord("saving"))
        parseLabelled(*node, "saving", parseExpression());
    return node;
}

/// "random number" [ expr | "from" expr "to" expr ]
void Parser::parseRandomNumber(CommandExpr& node)
{
    if (takeWord("from")) {
        parseLabelled(node, "from", parseBinary(kOperandLevel));
        expectWord("to");
        parseLabelled(node, "to", parseBinary(kOperandLevel));
    } else if (startsOperand()) {
        adopt(node, node.direct, parseBinary(kOperandLevel));
    }
}

/// "make" [ "new" ] class { "at" PLACE | "with properties" expr | "with data" expr }
void Parser::parseMake(CommandExpr& node)
{
    takeWord("new");
    const Token& token = peek();
    const Match found = expectClassTerm();
    if (!found.application || !found.application->classTerm)
        failExpected("a class of " + dictionary()->applicationName(), token);
    node.newClass = found.application->classTerm;
    skip(found.words);
    for (;;) {
        if (takeWord("at")) {
            parseLabelled(node, "at", parseArgument());
        } else if (takeWords("with properties")) {
            parseLabelled(node, "with properties", parseExpression());
        } else if (takeWords("with data")) {
            parseLabelled(node, "with data", parseExpression());
        } else {
            return;
        }
    }
}

/// "offset" "of" expr "in" expr
void Parser::parseOffset(CommandExpr& node)
{
    expectWord("of");
    {
        const WithFlags flags(*this, {.stopsAtIn = true});
        adopt(node, node.direct, parseBinary(kOperandLevel));
    }
    expectWord("in");
    parseLabelled(node, "in", parseBinary(kOperandLevel));
}

/// "round" expr [ "rounding" ( "up" | "down" | "toward zero" | "to nearest" | "as taught in school" ) ]
void Parser::parseRound(CommandExpr& node)
{
    adopt(node, node.direct, parseBinary(kOperandLevel));
    if (!takeWord("rounding"))
        return;
    for (const char* rounding : kRoundings) {
        if (takeWords(rounding))
            return parseLabelled(node, "rounding", makeLiteral(Value::constant(Symbol(rounding))));
    }
    fail("“up”, “down”, “toward zero”, “to nearest” or “as taught in school”");
}

} // namespace mervo::applescript
