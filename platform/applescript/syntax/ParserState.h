#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"
#include "platform/applescript/syntax/TokenStream.h"
#include "platform/applescript/values/Application.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace mervo::applescript {

/// One reading of one script, by recursive descent over the tokens. Each function reads what its comment's grammar
/// says; where a grammar is left out the name says it. Only the Parser*.cpp files include this.
class Parser : private TokenStream {
public:
    Parser(Script& script, ApplicationRegistry& registry);
    void run();

private:
    static constexpr int kDeepestNesting = 600;
    static constexpr int kDeepestTree = 800; // chains such as a + b + c + ... grow to the left

    // What a term at the present token means in the innermost application and in the language; of different lengths
    // only the longer counts.
    struct Match {
        std::size_t words = 0;
        const Meaning* application = nullptr;
        const Meaning* language = nullptr;

        template <typename Test>
        bool any(Test test) const
        {
            return (application && (application->*test)()) || (language && (language->*test)());
        }
        bool isCommand() const { return any(&Meaning::isCommand); }
        bool isClass() const { return any(&Meaning::isClass); }
        bool isProperty() const { return any(&Meaning::isProperty); }
        bool isConstant() const { return any(&Meaning::isConstant); }
    };

    class Nesting {
    public:
        explicit Nesting(Parser& parser);
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;
        ~Nesting() { --parser_.nesting_; }

    private:
        Parser& parser_;
    };

    /// `in` and `whose` belong to somebody further out while this stands.
    struct Flags {
        bool stopsAtIn = false;
        bool stopsAtWhose = false;
    };
    class WithFlags {
    public:
        WithFlags(Parser& parser, Flags flags)
            : parser_(parser)
            , saved_(parser.flags_)
        {
            parser.flags_ = flags;
        }
        WithFlags(const WithFlags&) = delete;
        WithFlags& operator=(const WithFlags&) = delete;
        ~WithFlags() { parser_.flags_ = saved_; }

    private:
        Parser& parser_;
        Flags saved_;
    };

    // Tokens.
    [[noreturn]] void failTooDeep() const { failAs("The script is nested too deeply here."); }
    [[noreturn]] void failUnknown(const std::string& what) const { failAs(what + " are not known to this host."); }
    Match match() const;
    Match match(std::size_t words) const;
    bool isOfOrIn() const noexcept;
    bool takeThru() { return takeWord("thru") || takeWord("through"); }

    // Nodes.
    template <typename T>
    std::unique_ptr<T> make()
    {
        auto node = std::make_unique<T>();
        node->place = peek().place;
        return node;
    }
    template <typename T>
    std::unique_ptr<T> finish(std::unique_ptr<T> node) const
    {
        node->place.end = endOfPrevious(node->place.end);
        return node;
    }
    /// Counts a child in the depth of its parent.
    ExprPtr& adopt(Expr& parent, ExprPtr& child) const;
    void adopt(Expr& parent, ExprPtr& place, ExprPtr child) const;
    /// Where a property or an element keeps what it belongs to; null for anything else.
    static ExprPtr* containerOf(Expr& part) noexcept;
    ExprPtr makeLiteral(Value value);
    ExprPtr takeLiteral(Value value, std::size_t words = 1);
    ExprPtr makeTarget(TargetExpr::Which which);
    /// The node that holds the variable must stay in the tree: where its value lives is written into it at the end.
    void use(VariableUse& variable, Symbol name);

    // ParserStatements.cpp
    void parseTopLevel();
    void parseUse();
    void parseProperty();
    void parseDeclaration(std::vector<Symbol>& names);
    void parseHandler();
    ExprPtr parsePattern();
    void parseParameters(Handler& handler);
    Block parseBlock();
    void expectEnd(std::initializer_list<std::string_view> names);
    void parseStatement(Block& block);
    std::unique_ptr<Statement> parseSimple();
    std::unique_ptr<Statement> parseCompound();
    std::unique_ptr<Statement> parseSet();
    std::unique_ptr<Statement> parseCopy();
    std::unique_ptr<Statement> parseReturn();
    std::unique_ptr<Statement> parseExit();
    std::unique_ptr<Statement> parseError();
    std::unique_ptr<Statement> parseIf();
    std::unique_ptr<Statement> parseRepeat();
    void parseRepeatWith(RepeatStatement& repeat);
    std::unique_ptr<Statement> parseTell();
    std::unique_ptr<Statement> parseTry();
    void parseCatch(TryStatement& statement);
    void parseBinding(std::unique_ptr<VariableUse>& place);
    std::unique_ptr<Statement> parseConsider();
    void parseAttributes(ConsiderStatement& statement, bool isConsidering);
    std::unique_ptr<Statement> parseTimeout();
    void parseTermsFrom(Block& block);
    ExprPtr parseAssignable();

    // ParserExpressions.cpp
    struct Operator;
    ExprPtr parseExpression();
    ExprPtr parseBinary(int level);
    std::optional<Operator> peekOperator() const;
    ExprPtr parseIsRunning(ExprPtr application);
    ExprPtr parseCast(ExprPtr operand);
    ExprPtr combine(const Operator& op, ExprPtr left, ExprPtr right);
    ExprPtr parseUnary();
    ExprPtr parsePostfix();
    ExprPtr parsePrimary();
    ExprPtr parseWord();
    ExprPtr parseParenthesis();
    ExprPtr parseBraces();
    std::optional<Symbol> takeLabel();
    ExprPtr parseName();
    std::unique_ptr<CallExpr> parseCall();
    void parseCallArguments(CallExpr& call);
    /// An operator in front of its operand.
    template <typename Operand>
    ExprPtr parsePrefix(Unary::Op op, Operand operand)
    {
        auto unary = make<Unary>();
        skip();
        unary->op = op;
        adopt(*unary, unary->operand, operand());
        return finish(std::move(unary));
    }
    ExprPtr parseMy();
    TargetClass parseTargetClass();

    // ParserReferences.cpp
    ExprPtr parsePart();
    ExprPtr parseTerm(const Match& found);
    ExprPtr parsePropertyTerm(const Match& found);
    ExprPtr parseClassTerm(const Match& found);
    bool startsLiteral(const Match& found);
    bool parseKeys(ElementExpr& element);
    ExprPtr parseClassValue(const Meaning& meaning, std::unique_ptr<ElementExpr> element);
    std::unique_ptr<ElementExpr> startElement(const Match& found);
    Match expectClassTerm();
    ExprPtr parseEvery();
    ExprPtr parseOrdinal(Value position, ElementExpr::Form form);
    ExprPtr parseOrdinalWord();
    bool startsIndex() const;
    bool startsIndexAfter(std::size_t words);
    ExprPtr parseIndex();
    ExprPtr parseRangeBound();
    ExprPtr withOwner(ExprPtr part, TargetExpr::Which owner);
    ExprPtr attach(ExprPtr part);
    ExprPtr parseWhose(ExprPtr part);
    ExprPtr parseFileLiteral(std::size_t words);
    ExprPtr parseApplication();
    ExprPtr parseReferenceTo();
    std::unique_ptr<InsertionExpr> parseInsertion();
    bool startsInsertion() const;
    bool startsOrdinal() const;

    // ParserCommands.cpp
    ExprPtr parseCommand(const Match& found);
    ExprPtr parseDictionaryCommand(const CommandTerm& command);
    void parseArguments(CommandExpr& node, const CommandTerm& command);
    bool parseSwitches(CommandExpr& node, const CommandTerm& command);
    struct Label {
        const ParameterTerm* parameter = nullptr;
        std::size_t words = 0;
    };
    Label matchLabel(const CommandTerm& command) const;
    ExprPtr parseLanguageCommand(LanguageCommand command);
    void parseLabelled(CommandExpr& node, std::string_view label, ExprPtr argument);
    void parseMake(CommandExpr& node);
    void parseOffset(CommandExpr& node);
    void parseRound(CommandExpr& node);
    void parseRandomNumber(CommandExpr& node);
    ExprPtr parseArgument();
    bool startsOperand() const;

    const Dictionary* dictionary() const noexcept { return scopes_.empty() ? nullptr : scopes_.back(); }
    void enterTerms(const ApplicationExpr& application);

    Script& script_;
    ApplicationRegistry& registry_;
    Flags flags_;
    int nesting_ = 0;
    int loops_ = 0;
    Handler* handler_ = nullptr;
    std::vector<Symbol> topGlobals_;
    std::vector<const Dictionary*> scopes_; // null where the application has no terms here
    std::map<const Dictionary*, TermTable> tables_;
};

} // namespace mervo::applescript
