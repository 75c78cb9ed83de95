#include "platform/applescript/syntax/ParserState.h"

#include <array>

namespace mervo::applescript {

namespace {

constexpr auto kOrdinals = std::to_array<std::string_view>(
    {"first", "second", "third", "fourth", "fifth", "sixth", "seventh", "eighth", "ninth", "tenth"});

/// 1-10 for the words, -1 for last and back, 1 for front; 0 for any other word.
int ordinalOf(std::string_view word)
{
    if (word == "last" || word == "back")
        return -1;
    if (word == "front")
        return 1;
    for (std::size_t i = 0; i < kOrdinals.size(); ++i) {
        if (word == kOrdinals[i])
            return static_cast<int>(i) + 1;
    }
    return 0;
}

} // namespace

/// propname | class ... | [ "every" ] class | ordinal class | "its" part, and what else begins with a word
ExprPtr Parser::parsePart()
{
    const Nesting nesting(*this);
    takeWord("the");
    if (isWord("its")) {
        skip();
        return withOwner(parsePart(), TargetExpr::Which::it);
    }
    if (isWord("every"))
        return parseEvery();
    // `first name` of a person is a property, not the first of something.
    const Match found = match();
    if (startsOrdinal() && found.words < 2)
        return parseOrdinalWord();
    if (isWord("number") && isWord("of", 1)) {
        auto count = make<CommandExpr>();
        skip(2);
        count->command = LanguageCommand::count;
        adopt(*count, count->direct, parsePostfix());
        return finish(std::move(count));
    }
    if (found.words > 0)
        return parseTerm(found);
    if (isWord("app"))
        return parseApplication();
    if (!isName())
        fail("expression");
    return parseName();
}

/// Which of its meanings a term has here.
ExprPtr Parser::parseTerm(const Match& found)
{
    const bool isContained = isWord("of", found.words) || (isWord("in", found.words) && !flags_.stopsAtIn);
    // `message id 7`: the longest term is a property, but an index follows.
    if (found.words > 1 && isWord("id", found.words - 1) && found.isProperty()) {
        const Match shorter = match(found.words - 1);
        if (shorter.isClass() && startsIndexAfter(found.words) && !isContained)
            return parseClassTerm(shorter);
    }
    if (found.isCommand() && !(found.isProperty() && isContained))
        return parseCommand(found);
    if (found.isConstant() && !(found.isProperty() && isContained)) {
        const Meaning& meaning =
            found.application && found.application->isConstant() ? *found.application : *found.language;
        return takeLiteral(meaning.constant, found.words);
    }
    if (found.isClass() && found.isProperty()) {
        const bool isElement = startsIndexAfter(found.words) || isWord("id", found.words)
            || isWord("named", found.words) || isWord("from", found.words);
        return isElement ? parseClassTerm(found) : parsePropertyTerm(found);
    }
    return found.isClass() ? parseClassTerm(found) : parsePropertyTerm(found);
}

ExprPtr Parser::parsePropertyTerm(const Match& found)
{
    auto property = make<PropertyExpr>();
    if (found.application && found.application->propertyId != kNoTerm) {
        property->dictionary = dictionary();
        property->propertyId = found.application->propertyId;
        property->name = found.application->words;
    }
    if (found.language && found.language->property != LanguageProperty::none) {
        property->property = found.language->property;
        property->name = found.language->words;
    }
    skip(found.words);
    return attach(std::move(property));
}

std::unique_ptr<ElementExpr> Parser::startElement(const Match& found)
{
    auto element = make<ElementExpr>();
    if (found.language && found.language->isClass()) {
        element->className = found.language->className;
        element->languageClass = found.language->languageClass;
    }
    if (found.application && found.application->isClass()) {
        element->className = found.application->className;
        element->dictionary = dictionary();
        element->classTerm = found.application->classTerm;
    }
    skip(found.words);
    return element;
}

/// Whether `date`, `file`, `alias` or `POSIX file` has its text behind it.
bool Parser::startsLiteral(const Match& found)
{
    switch (found.language->languageClass) {
    case LanguageClass::file:
    case LanguageClass::alias:
    case LanguageClass::posixFile:
    case LanguageClass::date:
        return startsIndexAfter(found.words);
    default:
        return false;
    }
}

/// class keys | plural, or the class itself as a value
ExprPtr Parser::parseClassTerm(const Match& found)
{
    const bool isOfApplication = found.application && found.application->isClass();
    const Meaning& meaning = isOfApplication ? *found.application : *found.language;
    if (!isOfApplication && !meaning.isPlural) {
        if (meaning.languageClass == LanguageClass::application)
            return parseApplication();
        if (startsLiteral(found))
            return parseFileLiteral(found.words);
    }
    auto element = startElement(found);
    if (!parseKeys(*element) && !meaning.isPlural)
        return parseClassValue(meaning, std::move(element));
    if (element->key)
        adopt(*element, element->key);
    if (element->lastKey)
        adopt(*element, element->lastKey);
    return attach(std::move(element));
}

/// "id" index | "named" index | "from" bound "to" bound | index [ "thru" bound ]; false when there is none of these.
bool Parser::parseKeys(ElementExpr& element)
{
    if (isWord("id") && !isWord("of", 1)) {
        skip();
        element.form = ElementExpr::Form::id;
        element.key = isSymbol("{") ? parseBraces() : parseIndex();
    } else if (takeWord("named")) {
        element.form = ElementExpr::Form::index;
        element.isNamed = true;
        element.key = parseIndex();
    } else if (takeWord("from")) {
        element.form = ElementExpr::Form::range;
        element.key = parseRangeBound();
        expectWord("to");
        element.lastKey = parseRangeBound();
    } else if (startsIndex()) {
        element.form = ElementExpr::Form::index;
        element.key = parseIndex();
        if (takeThru()) {
            element.form = ElementExpr::Form::range;
            element.lastKey = parseRangeBound();
        }
    } else {
        return false;
    }
    return true;
}

/// The class as a value; `text of x` is a property in spirit.
ExprPtr Parser::parseClassValue(const Meaning& meaning, std::unique_ptr<ElementExpr> element)
{
    if (meaning.languageClass == LanguageClass::text && isOfOrIn()) {
        element->form = ElementExpr::Form::range;
        element->key = makeLiteral(Value::integer(1));
        element->lastKey = makeLiteral(Value::integer(-1));
        return attach(std::move(element));
    }
    ExprPtr literal = makeLiteral(Value::classTerm(meaning.className));
    literal->place = element->place;
    return literal;
}

Parser::Match Parser::expectClassTerm()
{
    takeWord("the");
    Match found = match();
    // `every message id` has a class in front of the property.
    while (found.words > 1 && !found.isClass())
        found = match(found.words - 1);
    if (found.words == 0 || !found.isClass())
        fail("class name");
    return found;
}

/// "every" class
ExprPtr Parser::parseEvery()
{
    const Token& start = peek();
    skip();
    auto element = startElement(expectClassTerm());
    element->place.start = start.place.start;
    // `every message 1 thru 5`
    if (startsIndex()) {
        element->key = parseIndex();
        if (!takeThru())
            fail("“thru”");
        element->form = ElementExpr::Form::range;
        element->lastKey = parseRangeBound();
        adopt(*element, element->key);
        adopt(*element, element->lastKey);
    }
    return attach(std::move(element));
}

bool Parser::startsOrdinal() const
{
    if (peek().kind == TokenKind::ordinal)
        return true;
    if (peek().kind != TokenKind::word || isWord("of", 1))
        return false;
    return isWord("middle") || isWord("some") || ordinalOf(peek().text) != 0;
}

ExprPtr Parser::parseOrdinalWord()
{
    const Token& token = peek();
    if (token.kind == TokenKind::ordinal) {
        return parseOrdinal(Value::integer(static_cast<std::int64_t>(token.number < 1e9 ? token.number : 1e9)),
            ElementExpr::Form::index);
    }
    if (token.text == "middle")
        return parseOrdinal({}, ElementExpr::Form::middle);
    if (token.text == "some")
        return parseOrdinal({}, ElementExpr::Form::some);
    return parseOrdinal(Value::integer(ordinalOf(token.text)), ElementExpr::Form::index);
}

ExprPtr Parser::parseOrdinal(Value position, ElementExpr::Form form)
{
    const Place start = peek().place;
    ExprPtr key = makeLiteral(std::move(position));
    skip();
    auto element = startElement(expectClassTerm());
    element->place.start = start.start;
    element->form = form;
    if (form == ElementExpr::Form::index)
        adopt(*element, element->key, std::move(key));
    return attach(std::move(element));
}

bool Parser::startsIndexAfter(std::size_t words)
{
    const Lookahead there(*this, words);
    return startsIndex();
}

bool Parser::startsIndex() const
{
    const Token& token = peek();
    switch (token.kind) {
    case TokenKind::integer:
    case TokenKind::real:
    case TokenKind::text:
    case TokenKind::barred:
        return true;
    case TokenKind::symbol:
        return token.text == "(" || (token.text == "-" && peek(1).kind == TokenKind::integer);
    case TokenKind::word:
        if (token.text == "my")
            return true;
        return isName() && match().words == 0 && !isWord("app") && !isWord("exists") && !isWord("id")
            && !isWord("named") && !startsOrdinal() && !isWord("at") && !isWord("less") && !isWord("greater")
            && !isWord("comes") && !isWord("times");
    default:
        return false;
    }
}

/// A position or a name: a number, a text, a variable, a call or something in parentheses.
ExprPtr Parser::parseIndex()
{
    const Nesting nesting(*this);
    if (isSymbol("-"))
        return parsePrefix(Unary::Op::negate, [&] { return parsePrimary(); });
    if (isWord("my"))
        return parseMy();
    if (!isName() || match().words > 0)
        return parsePrimary();
    if (isSymbol("(", 1)) {
        auto call = make<CallExpr>();
        call->name = takeName();
        parseCallArguments(*call);
        return finish(std::move(call));
    }
    auto variable = make<Variable>();
    use(variable->use, takeName());
    return variable;
}

/// An index, `beginning`, `end`, or an element that marks a place: `word 2`.
ExprPtr Parser::parseRangeBound()
{
    if (isWord("end") || isWord("beginning"))
        return takeLiteral(Value::integer(isWord("end") ? -1 : 1));
    const Match found = match();
    if (found.words == 0 || !found.isClass())
        return parseIndex();
    auto element = startElement(found);
    element->form = ElementExpr::Form::index;
    if (!startsIndex())
        fail("number");
    adopt(*element, element->key, parseIndex());
    return finish(std::move(element));
}

/// `my p`, `its p`: a property that was written without an owner.
ExprPtr Parser::withOwner(ExprPtr part, TargetExpr::Which owner)
{
    if (part->kind == ExprKind::property && !as<PropertyExpr>(*part).container)
        adopt(*part, *containerOf(*part), makeTarget(owner));
    return part;
}

/// part [ ( "of" | "in" ) postfix ] [ ( "whose" | "where" ) expr ]
ExprPtr Parser::attach(ExprPtr part)
{
    const Nesting nesting(*this);
    if (isOfOrIn()) {
        skip();
        const WithFlags flags(*this, {.stopsAtIn = flags_.stopsAtIn, .stopsAtWhose = true});
        adopt(*part, *containerOf(*part), parsePostfix());
    }
    part = finish(std::move(part));
    if (!flags_.stopsAtWhose && (isWord("whose") || isWord("where")))
        return parseWhose(std::move(part));
    return part;
}

/// The filter belongs to the first element that the reference goes through: `name of every x of c whose ...` filters x.
ExprPtr Parser::parseWhose(ExprPtr part)
{
    const Token& start = peek();
    skip();
    ExprPtr* place = &part;
    while ((*place)->kind == ExprKind::property) {
        ExprPtr& container = static_cast<PropertyExpr&>(**place).container;
        if (!container || container->isParenthesised)
            break;
        place = &container;
    }
    if ((*place)->kind != ExprKind::element || as<ElementExpr>(**place).form == ElementExpr::Form::id)
        failExpected("a reference to elements before it", start);
    auto filter = std::make_unique<FilterExpr>();
    filter->place = (*place)->place;
    ExprPtr element = std::move(*place);
    filter->condition = parseExpression();
    adopt(*filter, element);
    adopt(*filter, filter->condition);
    filter->element.reset(static_cast<ElementExpr*>(element.release()));
    *place = finish(std::move(filter));
    if (part->depth <= (*place)->depth && place != &part)
        part->depth = static_cast<std::uint16_t>((*place)->depth + 1);
    return part;
}

/// "date" postfix | "POSIX file" postfix | "alias" postfix | "file" postfix
ExprPtr Parser::parseFileLiteral(std::size_t words)
{
    if (isWord("date")) {
        auto date = make<DateExpr>();
        skip(words);
        adopt(*date, date->text, parsePostfix());
        return finish(std::move(date));
    }
    auto file = make<FileExpr>();
    skip(words);
    adopt(*file, file->path, parsePostfix());
    return finish(std::move(file));
}

/// "application" [ "id" ] postfix; the class as a value where no name follows
ExprPtr Parser::parseApplication()
{
    auto application = make<ApplicationExpr>();
    skip();
    application->isById = isWord("id") && peek(1).kind != TokenKind::lineEnd && takeWord("id");
    if (!startsIndex()) {
        if (application->isById)
            fail("string");
        ExprPtr literal = makeLiteral(Value::classTerm(Symbol("application")));
        literal->place = application->place;
        return literal;
    }
    adopt(*application, application->name, parseIndex());
    return finish(std::move(application));
}

/// "a reference to" reference
ExprPtr Parser::parseReferenceTo()
{
    auto reference = make<ReferenceTo>();
    skip(3);
    const Token& start = peek();
    reference->what = parsePostfix();
    const ExprKind kind = reference->what->kind;
    if (kind != ExprKind::element && kind != ExprKind::property && kind != ExprKind::filter
        && kind != ExprKind::variable && kind != ExprKind::application)
        failExpected("a reference", start);
    adopt(*reference, reference->what);
    return finish(std::move(reference));
}

bool Parser::startsInsertion() const
{
    if (isWord("beginning") || isWord("end") || isWord("before") || isWord("after"))
        return true;
    return (isWord("front") || isWord("back")) && isWord("of", 1);
}

/// ( "beginning" | "end" | "front" | "back" ) [ "of" postfix ] | ( "before" | "after" ) reference
std::unique_ptr<InsertionExpr> Parser::parseInsertion()
{
    using Where = InsertionExpr::Where;
    auto insertion = make<InsertionExpr>();
    const std::string& word = peek().text;
    insertion->where = word == "before"   ? Where::before
        : word == "after"                 ? Where::after
        : word == "end" || word == "back" ? Where::end
                                          : Where::beginning;
    skip();
    if (insertion->where == Where::before || insertion->where == Where::after || takeWord("of")) {
        adopt(*insertion, insertion->container, parsePostfix());
    } else {
        insertion->container = makeTarget(TargetExpr::Which::it);
    }
    return finish(std::move(insertion));
}

} // namespace mervo::applescript
