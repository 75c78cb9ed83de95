#pragma once

#include "platform/applescript/syntax/Terms.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Dictionary.h"
#include "platform/applescript/values/ScriptError.h"
#include "platform/applescript/values/TextRules.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/// A script as a plain tree: what the parser gives and the evaluator walks. Nodes hold no behaviour. Every node knows
/// its place in the source. The parser bounds the depth of the tree.
namespace mervo::applescript {

enum class ExprKind : std::uint8_t {
    literal,
    variable,
    list,
    record,
    unary,
    binary,
    logical,
    concat,
    cast,
    property,
    element,
    filter,
    target,
    referenceTo,
    call,
    command,
    application,
    insertion,
    file,
    date,
};

struct Expr {
    explicit Expr(ExprKind which)
        : kind(which)
    {
    }
    virtual ~Expr() = default;

    ExprKind kind;
    bool isParenthesised = false;
    std::uint16_t depth = 1;
    Place place;
};
using ExprPtr = std::unique_ptr<Expr>;

template <ExprKind K>
struct ExprOf : Expr {
    static constexpr ExprKind kKind = K;
    ExprOf()
        : Expr(K)
    {
    }
};

/// A name in the source and, once all names of its handler are known, where its value is kept.
struct VariableUse {
    Symbol name;
    std::uint32_t slot = 0;
    bool isGlobal = false; // `my x` is from the start
};

struct Literal final : ExprOf<ExprKind::literal> {
    Value value;
};

struct Variable final : ExprOf<ExprKind::variable> {
    VariableUse use;
};

struct ListExpr final : ExprOf<ExprKind::list> {
    std::vector<ExprPtr> items;
};

struct RecordExpr final : ExprOf<ExprKind::record> {
    std::vector<std::pair<Symbol, ExprPtr>> fields;
};

struct Unary final : ExprOf<ExprKind::unary> {
    enum class Op { negate, plus, logicalNot };
    Op op = Op::negate;
    ExprPtr operand;
};

enum class BinaryOp : std::uint8_t {
    add,
    subtract,
    multiply,
    divide,
    integerDivide,
    modulo,
    power,
    equal,
    notEqual,
    less,
    greater,
    lessOrEqual,
    greaterOrEqual,
    contains,
    notContains,
    isIn,
    isNotIn,
    startsWith,
    notStartsWith,
    endsWith,
    notEndsWith,
};

struct Binary final : ExprOf<ExprKind::binary> {
    BinaryOp op = BinaryOp::add;
    ExprPtr left;
    ExprPtr right;
};

struct Logical final : ExprOf<ExprKind::logical> {
    bool isAnd = true;
    ExprPtr left;
    ExprPtr right;
};

/// A chain of `&`: from left to right.
struct Concat final : ExprOf<ExprKind::concat> {
    std::vector<ExprPtr> parts;
};

struct Cast final : ExprOf<ExprKind::cast> {
    TargetClass target = TargetClass::item;
    ExprPtr operand;
};

/// `name of x`. Without a container it belongs to the target of the innermost `tell`.
struct PropertyExpr final : ExprOf<ExprKind::property> {
    Symbol name;
    LanguageProperty property = LanguageProperty::none;
    const Dictionary* dictionary = nullptr; // whose `propertyId` this is
    TermId propertyId = kNoTerm;
    ExprPtr container;
};

/// `item 2 of x`, `every message of mb`, `text 1 thru 4 of s`, `mailbox "INBOX"`.
struct ElementExpr final : ExprOf<ExprKind::element> {
    enum class Form { every, index, id, range, middle, some };

    Symbol className;
    LanguageClass languageClass = LanguageClass::none;
    const Dictionary* dictionary = nullptr; // whose `classTerm` this is
    const ClassTerm* classTerm = nullptr;
    Form form = Form::every;
    bool isNamed = false; // `named X`: the key is a name even where it looks like a number
    ExprPtr key; // a name when it is a text, a position when it is a number
    ExprPtr lastKey; // of a range
    ExprPtr container;
};

struct FilterExpr final : ExprOf<ExprKind::filter> {
    std::unique_ptr<ElementExpr> element;
    ExprPtr condition;
};

struct TargetExpr final : ExprOf<ExprKind::target> {
    enum class Which { it, me, result, language };
    Which which = Which::it;
};

struct ReferenceTo final : ExprOf<ExprKind::referenceTo> {
    ExprPtr what;
};

struct CallExpr final : ExprOf<ExprKind::call> {
    Symbol name;
    bool isMine = false; // `my h()`, `h() of me`: never sent to the target of the `tell`
    std::vector<ExprPtr> arguments;
    ExprPtr target; // `h() of x`
};

struct CommandExpr final : ExprOf<ExprKind::command> {
    LanguageCommand command = LanguageCommand::none;
    const Dictionary* dictionary = nullptr; // the application's whose terms were in scope
    const CommandTerm* commandTerm = nullptr;
    const ClassTerm* newClass = nullptr; // `make`
    ExprPtr direct;
    std::vector<std::pair<TermId, ExprPtr>> arguments; // of commands of a dictionary
    std::vector<std::pair<Symbol, ExprPtr>> labelled; // of commands of the language, by label
};

struct ApplicationExpr final : ExprOf<ExprKind::application> {
    ExprPtr name;
    bool isById = false;
};

struct InsertionExpr final : ExprOf<ExprKind::insertion> {
    enum class Where { beginning, end, before, after };
    Where where = Where::end;
    ExprPtr container;
};

struct FileExpr final : ExprOf<ExprKind::file> {
    ExprPtr path;
};

struct DateExpr final : ExprOf<ExprKind::date> {
    ExprPtr text;
};

enum class StatementKind : std::uint8_t {
    expression,
    set,
    returns,
    exitRepeat,
    error,
    conditional,
    repeat,
    tell,
    tries,
    consider,
    timeout,
};

struct Statement {
    explicit Statement(StatementKind which)
        : kind(which)
    {
    }
    virtual ~Statement() = default;

    StatementKind kind;
    Place place;
};
using Block = std::vector<std::unique_ptr<Statement>>;

template <StatementKind K>
struct StatementOf : Statement {
    static constexpr StatementKind kKind = K;
    StatementOf()
        : Statement(K)
    {
    }
};

struct ExpressionStatement final : StatementOf<StatementKind::expression> {
    ExprPtr expression;
};

struct SetStatement final : StatementOf<StatementKind::set> {
    bool isCopy = false;
    ExprPtr target;
    ExprPtr value;
};

struct ReturnStatement final : StatementOf<StatementKind::returns> {
    ExprPtr value;
};

struct ExitStatement final : StatementOf<StatementKind::exitRepeat> { };

struct ErrorStatement final : StatementOf<StatementKind::error> {
    ExprPtr message;
    ExprPtr number;
    ExprPtr offender;
    ExprPtr partialResult;
    ExprPtr expectedClass;
};

struct IfStatement final : StatementOf<StatementKind::conditional> {
    std::vector<std::pair<ExprPtr, Block>> branches;
    Block otherwise;
};

struct RepeatStatement final : StatementOf<StatementKind::repeat> {
    enum class Form { forever, whileTrue, untilTrue, times, range, list };
    Form form = Form::forever;
    VariableUse variable;
    ExprPtr first; // condition, number of rounds, start, or list
    ExprPtr last;
    ExprPtr step;
    Block body;
};

struct TellStatement final : StatementOf<StatementKind::tell> {
    ExprPtr target;
    Block body;
};

struct TryStatement final : StatementOf<StatementKind::tries> {
    Block body;
    bool hasHandler = false;
    bool hasNumberLiteral = false; // `on error number -128` catches this one only
    std::int64_t onlyNumber = 0;
    // Null where the handler does not name them.
    std::unique_ptr<VariableUse> message;
    std::unique_ptr<VariableUse> number;
    std::unique_ptr<VariableUse> offender;
    std::unique_ptr<VariableUse> partialResult;
    std::unique_ptr<VariableUse> expectedClass;
    Block handler;
};

struct ConsiderStatement final : StatementOf<StatementKind::consider> {
    std::vector<std::pair<bool TextRules::*, bool>> changes;
    Block body;
};

struct TimeoutStatement final : StatementOf<StatementKind::timeout> {
    ExprPtr seconds;
    Block body;
};

struct Handler {
    Symbol name;
    Place place;
    std::vector<ExprPtr> parameters; // variables, or lists of them
    Block body;
    bool isRun = false;
    std::uint32_t localCount = 0;

    // What deciding where names live needs.
    std::vector<VariableUse*> uses;
    std::vector<Symbol> globals; // declared in the handler, or at the top before it
    std::vector<Symbol> locals; // declared, and the parameters
};

struct Property {
    VariableUse variable;
    ExprPtr value;
};

struct Script {
    std::string source;
    std::vector<std::unique_ptr<Property>> properties;
    std::unordered_map<std::uint32_t, std::unique_ptr<Handler>> handlers; // by symbol
    std::unique_ptr<Handler> run;
    bool hasExplicitRun = false;
    std::vector<Symbol> globalNames; // by slot
};

template <typename T>
const T& as(const Expr& expr)
{
    return static_cast<const T&>(expr);
}

template <typename T>
const T& as(const Statement& statement)
{
    return static_cast<const T&>(statement);
}

} // namespace mervo::applescript
