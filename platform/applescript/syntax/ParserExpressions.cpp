#include "platform/applescript/syntax/ParserState.h"

#include <array>

namespace mervo::applescript {

namespace {

enum Level { kOr = 1, kAnd, kNot, kEqual, kRelate, kCast, kConcat, kSum, kProduct, kPower };

enum class Sort : std::uint8_t { binary, logicalOr, logicalAnd, cast, concat };

struct Spelling {
    std::string_view words;
    int level;
    Sort sort;
    BinaryOp op = BinaryOp::add;
};

// Of several that fit the longest counts.
constexpr auto kWordOperators = std::to_array<Spelling>({{"or", kOr, Sort::logicalOr}, {"and", kAnd, Sort::logicalAnd},
    {"as", kCast, Sort::cast}, {"div", kProduct, Sort::binary, BinaryOp::integerDivide},
    {"mod", kProduct, Sort::binary, BinaryOp::modulo}, {"is", kEqual, Sort::binary, BinaryOp::equal},
    {"equals", kEqual, Sort::binary, BinaryOp::equal}, {"is equal to", kEqual, Sort::binary, BinaryOp::equal},
    {"is equal", kEqual, Sort::binary, BinaryOp::equal}, {"equal to", kEqual, Sort::binary, BinaryOp::equal},
    {"equal", kEqual, Sort::binary, BinaryOp::equal}, {"is not", kEqual, Sort::binary, BinaryOp::notEqual},
    {"isn't", kEqual, Sort::binary, BinaryOp::notEqual}, {"is not equal to", kEqual, Sort::binary, BinaryOp::notEqual},
    {"is not equal", kEqual, Sort::binary, BinaryOp::notEqual},
    {"isn't equal to", kEqual, Sort::binary, BinaryOp::notEqual},
    {"does not equal", kEqual, Sort::binary, BinaryOp::notEqual},
    {"doesn't equal", kEqual, Sort::binary, BinaryOp::notEqual}, {"less than", kRelate, Sort::binary, BinaryOp::less},
    {"is less than", kRelate, Sort::binary, BinaryOp::less}, {"comes before", kRelate, Sort::binary, BinaryOp::less},
    {"is not greater than or equal to", kRelate, Sort::binary, BinaryOp::less},
    {"isn't greater than or equal to", kRelate, Sort::binary, BinaryOp::less},
    {"greater than", kRelate, Sort::binary, BinaryOp::greater},
    {"is greater than", kRelate, Sort::binary, BinaryOp::greater},
    {"comes after", kRelate, Sort::binary, BinaryOp::greater},
    {"is not less than or equal to", kRelate, Sort::binary, BinaryOp::greater},
    {"isn't less than or equal to", kRelate, Sort::binary, BinaryOp::greater},
    {"less than or equal to", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"less than or equal", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"is less than or equal to", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"is less than or equal", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"is not greater than", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"isn't greater than", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"does not come after", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"doesn't come after", kRelate, Sort::binary, BinaryOp::lessOrEqual},
    {"greater than or equal to", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"greater than or equal", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"is greater than or equal to", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"is greater than or equal", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"is not less than", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"isn't less than", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"does not come before", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"doesn't come before", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
    {"contains", kRelate, Sort::binary, BinaryOp::contains}, {"contain", kRelate, Sort::binary, BinaryOp::contains},
    {"does not contain", kRelate, Sort::binary, BinaryOp::notContains},
    {"doesn't contain", kRelate, Sort::binary, BinaryOp::notContains}, {"is in", kRelate, Sort::binary, BinaryOp::isIn},
    {"is contained by", kRelate, Sort::binary, BinaryOp::isIn}, {"is not in", kRelate, Sort::binary, BinaryOp::isNotIn},
    {"isn't in", kRelate, Sort::binary, BinaryOp::isNotIn},
    {"is not contained by", kRelate, Sort::binary, BinaryOp::isNotIn},
    {"isn't contained by", kRelate, Sort::binary, BinaryOp::isNotIn},
    {"starts with", kRelate, Sort::binary, BinaryOp::startsWith},
    {"begins with", kRelate, Sort::binary, BinaryOp::startsWith},
    {"does not start with", kRelate, Sort::binary, BinaryOp::notStartsWith},
    {"doesn't start with", kRelate, Sort::binary, BinaryOp::notStartsWith},
    {"does not begin with", kRelate, Sort::binary, BinaryOp::notStartsWith},
    {"doesn't begin with", kRelate, Sort::binary, BinaryOp::notStartsWith},
    {"ends with", kRelate, Sort::binary, BinaryOp::endsWith},
    {"does not end with", kRelate, Sort::binary, BinaryOp::notEndsWith},
    {"doesn't end with", kRelate, Sort::binary, BinaryOp::notEndsWith}});

constexpr auto kSymbolOperators = std::to_array<Spelling>(
    {{"=", kEqual, Sort::binary, BinaryOp::equal}, {"/=", kEqual, Sort::binary, BinaryOp::notEqual},
        {"<", kRelate, Sort::binary, BinaryOp::less}, {">", kRelate, Sort::binary, BinaryOp::greater},
        {"<=", kRelate, Sort::binary, BinaryOp::lessOrEqual}, {">=", kRelate, Sort::binary, BinaryOp::greaterOrEqual},
        {"&", kConcat, Sort::concat}, {"+", kSum, Sort::binary, BinaryOp::add},
        {"-", kSum, Sort::binary, BinaryOp::subtract}, {"*", kProduct, Sort::binary, BinaryOp::multiply},
        {"/", kProduct, Sort::binary, BinaryOp::divide}, {"^", kPower, Sort::binary, BinaryOp::power}});

bool isFirstOfOperator(const Token& token)
{
    for (const Spelling& spelling : kWordOperators) {
        if (spelling.words.starts_with(token.text)
            && (spelling.words.size() == token.text.size() || spelling.words[token.text.size()] == ' '))
            return true;
    }
    return false;
}

} // namespace

struct Parser::Operator {
    int level = 0;
    Sort sort = Sort::binary;
    BinaryOp op = BinaryOp::add;
    std::size_t words = 0;
};

std::optional<Parser::Operator> Parser::peekOperator() const
{
    const Token& token = peek();
    if (token.kind == TokenKind::symbol) {
        for (const Spelling& spelling : kSymbolOperators) {
            if (token.text == spelling.words)
                return Operator{spelling.level, spelling.sort, spelling.op, 1};
        }
        return {};
    }
    if (token.kind != TokenKind::word || !isFirstOfOperator(token))
        return {};
    Operator best;
    for (const Spelling& spelling : kWordOperators) {
        if (const std::size_t words = matchWords(rest(), spelling.words); words > best.words)
            best = {spelling.level, spelling.sort, spelling.op, words};
    }
    if (best.words == 0)
        return {};
    return best;
}

ExprPtr Parser::parseExpression()
{
    return parseBinary(kOr);
}

/// Operators by precedence climbing: or, and, not, equality, order, as, &, + -, * / div mod, ^.
/// Equality and order do not associate, `^` associates to the right, the others to the left.
ExprPtr Parser::parseBinary(int level)
{
    const Nesting nesting(*this);
    ExprPtr left;
    if (level <= kNot && isWord("not")) {
        left = parsePrefix(Unary::Op::logicalNot, [&] { return parseBinary(kNot); });
    } else {
        left = parseUnary();
    }
    int highest = kPower;
    for (auto op = peekOperator(); op && op->level >= level && op->level <= highest; op = peekOperator()) {
        skip(op->words);
        if (op->sort == Sort::cast) {
            left = parseCast(std::move(left));
            continue;
        }
        const bool isEquality = op->op == BinaryOp::equal || op->op == BinaryOp::notEqual;
        if (isEquality && isWord("running") && left->kind == ExprKind::application) {
            left = parseIsRunning(std::move(left));
            if (op->op == BinaryOp::notEqual)
                left = combine(*op, std::move(left), makeLiteral(Value::boolean(true)));
            continue;
        }
        const bool isRight = op->level == kPower;
        ExprPtr right = parseBinary(isRight ? op->level : op->level + 1);
        left = combine(*op, std::move(left), std::move(right));
        if (op->level == kEqual || op->level == kRelate)
            highest = op->level - 1;
    }
    return left;
}

/// application "is" "running"
ExprPtr Parser::parseIsRunning(ExprPtr application)
{
    auto property = make<PropertyExpr>();
    property->name = Symbol("running");
    property->property = LanguageProperty::running;
    skip();
    adopt(*property, property->container, std::move(application));
    return property;
}

ExprPtr Parser::combine(const Operator& op, ExprPtr left, ExprPtr right)
{
    const Place start = left->place;
    const auto placed = [&](auto node) {
        node->place = {start.start, right ? right->place.end : start.end};
        return node;
    };
    if (op.sort == Sort::concat) {
        // A chain is one node, so that its length is no depth; `(a & b) & c` stays two.
        if (left->kind != ExprKind::concat || left->isParenthesised) {
            auto chain = std::make_unique<Concat>();
            chain->place = start;
            chain->parts.push_back(std::move(left));
            adopt(*chain, chain->parts.back());
            left = std::move(chain);
        }
        auto& chain = static_cast<Concat&>(*left);
        chain.place.end = right->place.end;
        chain.parts.push_back(std::move(right));
        adopt(chain, chain.parts.back());
        return left;
    }
    if (op.sort == Sort::binary) {
        auto node = placed(std::make_unique<Binary>());
        node->op = op.op;
        adopt(*node, node->left, std::move(left));
        adopt(*node, node->right, std::move(right));
        return node;
    }
    auto node = placed(std::make_unique<Logical>());
    node->isAnd = op.sort == Sort::logicalAnd;
    node->left = std::move(left);
    node->right = std::move(right);
    adopt(*node, node->left);
    adopt(*node, node->right);
    return node;
}

ExprPtr Parser::parseCast(ExprPtr operand)
{
    auto cast = std::make_unique<Cast>();
    cast->place = operand->place;
    cast->target = parseTargetClass();
    adopt(*cast, cast->operand, std::move(operand));
    return finish(std::move(cast));
}

TargetClass Parser::parseTargetClass()
{
    takeWord("the");
    if (peek().kind == TokenKind::raw && peek().text.starts_with("class ")) {
        if (peek().text != "class utf8" && peek().text != "class ut16")
            fail("class name");
        skip();
        return TargetClass::text;
    }
    const TermTable::Found found = TermTable::language().longest(rest());
    if (!found.meaning || found.meaning->languageClass == LanguageClass::none || found.meaning->isPlural)
        fail("class name");
    const Token& token = peek();
    skip(found.words);
    switch (found.meaning->languageClass) {
    case LanguageClass::integer:
        return TargetClass::integer;
    case LanguageClass::real:
        return TargetClass::real;
    case LanguageClass::number:
        return TargetClass::number;
    case LanguageClass::text:
        return TargetClass::text;
    case LanguageClass::boolean:
        return TargetClass::boolean;
    case LanguageClass::list:
        return TargetClass::list;
    case LanguageClass::record:
        return TargetClass::record;
    case LanguageClass::date:
        return TargetClass::date;
    case LanguageClass::classTerm:
        return TargetClass::classTerm;
    case LanguageClass::constant:
        return TargetClass::constant;
    case LanguageClass::file:
    case LanguageClass::alias:
    case LanguageClass::posixFile:
        return TargetClass::file;
    case LanguageClass::item:
    case LanguageClass::anything:
    case LanguageClass::reference:
        return TargetClass::item;
    default:
        failExpected("the name of a class that values can be made into", token);
    }
}

/// ( "-" | "+" ) unary | "a reference to" reference | postfix
ExprPtr Parser::parseUnary()
{
    const Nesting nesting(*this);
    if (isSymbol("-") || isSymbol("+"))
        return parsePrefix(isSymbol("-") ? Unary::Op::negate : Unary::Op::plus, [&] { return parseUnary(); });
    if (matchWords(rest(), "a reference to") > 0 || matchWords(rest(), "a ref to") > 0)
        return parseReferenceTo();
    ExprPtr operand = parsePostfix();
    if (isWord("exists") && operand->kind != ExprKind::literal) {
        auto exists = std::make_unique<CommandExpr>();
        exists->place = operand->place;
        skip();
        exists->command = LanguageCommand::exists;
        adopt(*exists, exists->direct, std::move(operand));
        return finish(std::move(exists));
    }
    return operand;
}

/// primary { "'s" part }
ExprPtr Parser::parsePostfix()
{
    const Nesting nesting(*this);
    ExprPtr expression = parsePrimary();
    while (takeSymbol("'s")) {
        const WithFlags flags(*this, {.stopsAtIn = true, .stopsAtWhose = true});
        const Place start = expression->place;
        ExprPtr part;
        if (isName() && match().words == 0) { // a record's own label
            auto property = make<PropertyExpr>();
            property->name = takeName();
            part = finish(std::move(property));
        } else {
            part = parsePart();
        }
        ExprPtr* container = containerOf(*part);
        if (!container || *container)
            failExpected("a property or an element", previous());
        adopt(*part, *container, std::move(expression));
        part->place.start = start.start;
        expression = std::move(part);
    }
    const bool isPart = expression->kind == ExprKind::element || expression->kind == ExprKind::property;
    if (isPart && !expression->isParenthesised && !flags_.stopsAtWhose && (isWord("whose") || isWord("where")))
        return parseWhose(std::move(expression));
    return expression;
}

ExprPtr Parser::parsePrimary()
{
    const Token& token = peek();
    switch (token.kind) {
    case TokenKind::integer: {
        return takeLiteral(
            token.number < 1e15 ? Value::integer(static_cast<std::int64_t>(token.number)) : Value::real(token.number));
    }
    case TokenKind::real: {
        return takeLiteral(Value::real(token.number));
    }
    case TokenKind::text: {
        return takeLiteral(Value::text(token.text));
    }
    case TokenKind::ordinal:
        return parseOrdinalWord();
    case TokenKind::barred:
        return parseName();
    case TokenKind::word:
        return parseWord();
    case TokenKind::symbol:
        if (token.text == "(")
            return parseParenthesis();
        if (token.text == "{")
            return parseBraces();
        break;
    default:
        break;
    }
    fail("expression");
}

ExprPtr Parser::parseParenthesis()
{
    const WithFlags flags(*this, {});
    const Token& opening = peek();
    skip();
    ExprPtr inner = parseExpression();
    expectSymbol(")");
    inner->isParenthesised = true;
    inner->place = {opening.place.start, previous().place.end};
    return inner;
}

/// A record's label: a name, or the words of a known property, in front of a colon.
std::optional<Symbol> Parser::takeLabel()
{
    if (peek().kind == TokenKind::barred && isSymbol(":", 1)) {
        const Symbol label = symbolOf(peek());
        skip(2);
        return label;
    }
    std::size_t words = 0;
    while (peek(words).kind == TokenKind::word)
        ++words;
    if (words == 0 || !isSymbol(":", words))
        return {};
    const Match term = match(words);
    if (words > 1 && !term.isProperty())
        failExpected("“:”", peek(1));
    std::string spelling;
    for (std::size_t i = 0; i < words; ++i)
        spelling += (i > 0 ? " " : "") + std::string(symbolOf(peek(i)).spelling());
    if (words == 1 && isReserved(peek().text))
        fail("the name of a property");
    skip(words + 1);
    return term.application && term.application->propertyId != kNoTerm ? term.application->words : Symbol(spelling);
}

/// "{" [ expr { "," expr } ] "}" | "{" label ":" expr { "," label ":" expr } "}"
ExprPtr Parser::parseBraces()
{
    const WithFlags flags(*this, {});
    auto list = make<ListExpr>();
    auto record = make<RecordExpr>();
    skip();
    if (takeSymbol("}"))
        return finish(std::move(list));
    do {
        const std::optional<Symbol> label = takeLabel();
        if (label && !list->items.empty())
            failExpected("“,” or “}”", previous());
        if (!label && !record->fields.empty())
            fail("the name of a property and “:”");
        ExprPtr value = parseExpression();
        if (label) {
            adopt(*record, record->fields.emplace_back(*label, std::move(value)).second);
        } else {
            adopt(*list, list->items.emplace_back(std::move(value)));
        }
    } while (takeSymbol(","));
    expectSymbol("}");
    if (record->fields.empty())
        return finish(std::move(list));
    return finish(std::move(record));
}

/// ident, or a call, or the field of a record: `who of r`
ExprPtr Parser::parseName()
{
    if (isSymbol("(", 1))
        return parseCall();
    auto start = make<Variable>();
    const Symbol name = takeName();
    if (isOfOrIn()) {
        auto property = std::make_unique<PropertyExpr>();
        property->place = start->place;
        property->name = name;
        return attach(std::move(property));
    }
    use(start->use, name);
    return start;
}

/// "(" [ expr { "," expr } ] ")"
void Parser::parseCallArguments(CallExpr& call)
{
    const WithFlags flags(*this, {});
    expectSymbol("(");
    if (takeSymbol(")"))
        return;
    do {
        adopt(call, call.arguments.emplace_back(parseExpression()));
    } while (takeSymbol(","));
    expectSymbol(")");
}

/// ident arguments [ ( "of" | "in" ) postfix ]
std::unique_ptr<CallExpr> Parser::parseCall()
{
    auto call = make<CallExpr>();
    call->name = takeName();
    parseCallArguments(*call);
    if (isOfOrIn()) {
        skip();
        adopt(*call, call->target, parsePostfix());
        if (call->target->kind == ExprKind::target && as<TargetExpr>(*call->target).which == TargetExpr::Which::me) {
            call->isMine = true;
            call->target.reset();
        }
    }
    return finish(std::move(call));
}

/// "my" ( call | ident | part )
ExprPtr Parser::parseMy()
{
    skip();
    if (isName() && isSymbol("(", 1)) {
        auto call = parseCall();
        call->isMine = true;
        return call;
    }
    if (isName() && match().words == 0) {
        auto variable = make<Variable>();
        variable->use.isGlobal = true;
        use(variable->use, takeName());
        return variable;
    }
    return withOwner(parsePart(), TargetExpr::Which::me);
}

ExprPtr Parser::parseWord()
{
    const std::string& word = peek().text;
    if (word == "the") {
        skip();
        return parsePrimary();
    }
    if (word == "true" || word == "false")
        return takeLiteral(Value::boolean(word == "true"));
    if (word == "return")
        return takeLiteral(Value::text("\r"));
    const auto target = [&](TargetExpr::Which which, std::size_t words) {
        ExprPtr expression = makeTarget(which);
        skip(words);
        return expression;
    };
    if (word == "it")
        return target(TargetExpr::Which::it, 1);
    if (word == "me")
        return target(TargetExpr::Which::me, 1);
    if (word == "result")
        return target(TargetExpr::Which::result, 1);
    if (word == "applescript")
        return target(TargetExpr::Which::language, 1);
    if (matchWords(rest(), "current application") > 0)
        return target(TargetExpr::Which::me, 2);
    if (word == "my")
        return parseMy();
    return parsePart();
}

} // namespace mervo::applescript
