#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"
#include "platform/applescript/values/Application.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Reference.h"
#include "platform/applescript/values/Text.h"
#include "platform/applescript/values/TextRules.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mervo::applescript {

/// Runs a script by walking its tree.
///
/// Objects of applications are looked up lazily: `every message of mb` is not fetched to be counted, and a property of
/// it is one question to the application. Time is bounded by whoever calls; memory and depth by Limits, of which the
/// caller sets up a Scope. Throws ScriptError, placed in the source. The script and the registry must outlive it, and
/// values that it gave must not be used after it.
class Evaluator {
public:
    using Log = std::function<void(const std::string&)>;

    Evaluator(const Script& script, ApplicationRegistry& registry, Log log);
    Evaluator(const Evaluator&) = delete;
    Evaluator& operator=(const Evaluator&) = delete;
    ~Evaluator();

    /// Runs the run handler. The result, fetched; none where there is none.
    Value run(const std::vector<std::string>& arguments);

private:
    enum class Flow { normal, exitRepeat, returned };
    enum class Access { get, set };

    /// The candidates of a filter, with the properties that its condition has asked for so far.
    struct Filter {
        Ref<Object> parent;
        const ClassTerm* elementClass = nullptr;
        Value candidates;
        std::size_t index = 0;
        std::vector<std::pair<TermId, Value>> columns;
        std::vector<std::pair<const Expr*, Value>> outside; // what has been computed once for all candidates
    };

    struct Frame {
        std::vector<Value> locals;
        Value it;
        Value result;
        Value returned;
        Filter* filter = nullptr; // set while `it` is a candidate
    };

    /// What a reference leads to: one value, a list that stands for many objects, or the elements of one class of
    /// one object, all or a range of them, not fetched.
    struct Found {
        struct Range {
            std::size_t first = 0;
            std::size_t count = 0;
        };

        Value value;
        bool isMany = false;
        Ref<Object> parent;
        const ClassTerm* every = nullptr;
        std::optional<Range> range = {};
    };

    struct Keys {
        Value first;
        Value last;
    };

    enum class Unit { character, word, paragraph, textItem };

    friend class PartReference;
    friend class VariableReference;
    friend class ElementReference;

    // Evaluator.cpp: statements and handlers.
    Flow execute(const Block& block);
    Flow execute(const Statement& statement);
    Flow executeUnplaced(const Statement& statement);
    Flow executeIf(const IfStatement& statement);
    Flow executeRepeat(const RepeatStatement& statement);
    Flow repeatRange(const RepeatStatement& statement);
    Flow repeatList(const RepeatStatement& statement);
    bool runRound(const RepeatStatement& statement, Flow& flow);
    Flow executeTell(const TellStatement& statement);
    Flow executeTry(const TryStatement& statement);
    Flow executeConsider(const ConsiderStatement& statement);
    Flow executeTimeout(const TimeoutStatement& statement);
    [[noreturn]] void raise(const ErrorStatement& statement);
    void bindError(const TryStatement& statement, const ScriptError& error);
    Value call(const CallExpr& expr);
    Value invoke(const Handler& handler, std::vector<Value> arguments);
    void bindPattern(const Expr& pattern, const Value& value);

    // EvaluatorExpressions.cpp: values and operators.
    Value evaluate(const Expr& expr);
    Value operand(const Expr& expr) { return dereferenced(evaluate(expr)); }
    bool condition(const Expr& expr);
    Value& slot(const VariableUse& use) { return use.isGlobal ? globals_[use.slot] : frame_->locals[use.slot]; }
    const Value& variable(const VariableUse& use, Place place);
    Value evaluateList(const ListExpr& expr);
    Value evaluateRecord(const RecordExpr& expr);
    Value evaluateUnary(const Unary& expr);
    Value evaluateBinary(const Binary& expr);
    Value evaluateConcat(const Concat& expr);
    Value concatenated(const Value& left, const Value& right, bool mayAppend);
    Value arithmetic(BinaryOp op, const Value& left, const Value& right);
    Value dateArithmetic(BinaryOp op, const Value& left, const Value& right);
    bool compare(BinaryOp op, const Value& left, const Value& right);
    bool holds(const Value& whole, const Value& part);
    bool holdsAtEdge(const Value& whole, const Value& part, bool atStart);
    const std::string& joiner();
    Value fastItem(const ElementExpr& expr);
    Value referenceTo(const ReferenceTo& expr);

    // EvaluatorReferences.cpp: properties and elements.
    Found find(const Expr& expr);
    Found container(const ExprPtr& expr);
    Value fetched(Found found);
    std::size_t countOf(const Found& found);
    Found findProperty(const PropertyExpr& expr);
    Found propertyOfMany(const Value& list, const PropertyExpr& expr);
    Value propertyOf(const Value& owner, const PropertyExpr& expr);
    Value objectProperty(Object& object, const PropertyExpr& expr);
    Value allProperties(Object& object);
    const PropertyTerm* propertyTerm(const Object& object, const PropertyExpr& expr) const;
    Found findElement(const ElementExpr& expr);
    Keys keysOf(const ElementExpr& expr);
    Found elementOf(const Value& owner, const ElementExpr& expr, const Keys& keys);
    Found elementOfMany(const Value& list, const ElementExpr& expr, const Keys& keys);
    Found objectElement(const Ref<Object>& owner, const ElementExpr& expr, const Keys& keys);
    Value singleElement(const Ref<Object>& owner, const ClassTerm& term, const ElementExpr& expr, const Keys& keys);
    const ClassTerm* elementClass(const Object& owner, const ElementExpr& expr) const;
    [[noreturn]] void failElement(int number, const ElementExpr& expr, const Keys& keys, const Value& owner);

    // EvaluatorFilters.cpp
    Found findFilter(const FilterExpr& expr);
    Found filtered(const Ref<Object>& owner, const FilterExpr& expr);
    Value column(const PropertyExpr& expr);
    Value onceForAll(const Expr& expr);

    // EvaluatorProperties.cpp: of the language's own values.
    Value languageProperty(const Value& owner, const PropertyExpr& expr);
    Value textProperty(const Value& owner, const PropertyExpr& expr);
    Value listProperty(const Value& owner, const PropertyExpr& expr);
    Value dateProperty(const Value& owner, const PropertyExpr& expr);
    Value applicationProperty(const Value& owner, const PropertyExpr& expr);
    [[noreturn]] void failProperty(const Value& owner, const PropertyExpr& expr);
    bool setDateProperty(Date& date, LanguageProperty property, const Value& value);
    void setDelimiters(const Value& value);

    // EvaluatorElements.cpp: of texts and lists.
    Value textElement(const Value& owner, const ElementExpr& expr, const Keys& keys);
    Value textRange(const Value& owner, const ElementExpr& expr, const Keys& keys);
    TextRange boundOf(const Value& owner, const ElementExpr& expr, const Expr& key, const Value& value, bool isFirst);
    Value listElement(const Value& owner, const ElementExpr& expr, const Keys& keys);
    Value elementById(const ElementExpr& expr, const Keys& keys);
    const std::vector<TextRange>& pieces(const Value& owner, Unit unit);
    std::optional<std::size_t> position(const ElementExpr& expr, const Value& key, std::size_t count) const;

    // EvaluatorAssignment.cpp
    void assign(const Expr& target, const Value& value);
    void assignList(const ListExpr& target, const Value& value);
    void assignProperty(const PropertyExpr& target, const Value& value);
    void setProperty(const Value& owner, const PropertyExpr& target, const Value& value);
    void setObjectProperty(Object& object, const PropertyExpr& target, const Value& value);
    void assignElement(const ElementExpr& target, const Value& value);
    void assignInsertion(const InsertionExpr& target, const Value& value);
    [[noreturn]] void failSet(const std::string& specifier, const Value& value);

    // EvaluatorCommands.cpp
    Value command(const CommandExpr& expr);
    Value count(const CommandExpr& expr);
    bool exists(const CommandExpr& expr);
    Value offset(const CommandExpr& expr);
    Value round(const CommandExpr& expr);
    Value randomNumber(const CommandExpr& expr);
    void delay(double seconds);
    Value applicationCommand(const CommandExpr& expr);
    Value make(const CommandExpr& expr);
    Value forEachObject(const CommandExpr& expr);
    Value dictionaryCommand(const CommandExpr& expr);
    Insertion insertion(const Expr& expr);
    Value argument(const Expr& expr);
    const Expr* labelled(const CommandExpr& expr, const char* label) const;
    Saving saving(const CommandExpr& expr);

    // EvaluatorApplications.cpp: every question to an application goes through `ask`.
    template <typename Question>
    auto ask(Application& application, Question&& question);
    template <typename Question, typename Specifier>
    auto ask(Application& application, Question&& question, Specifier&& specifier);
    void beginQuestion(Application& application);
    void endQuestion(Application& application);
    void explain(ScriptError& error, Application& application, const std::string& specifier) const;
    ApplicationRegistry::Entry& entryOf(const Value& application);
    Application& launched(ApplicationRegistry::Entry& entry);
    Ref<Object> rootOf(const Value& application);
    Ref<Object> targetObject();

    // EvaluatorSpecifiers.cpp: how references are written in messages.
    std::string describe(const PropertyExpr& expr, const Value& owner);
    std::string describe(const ElementExpr& expr, const Keys& keys, const Value& owner);
    std::string describePart(const ElementExpr& expr, const Keys& keys);
    std::string describeOwner(const ExprPtr& expr, const Value& owner);
    std::string describeCondition(const Expr& expr);
    std::string describeChain(const Expr& expr);

    const Script& script_;
    ApplicationRegistry& registry_;
    Log log_;
    std::vector<Value> globals_;
    Frame* frame_ = nullptr;
    TextRules rules_;
    Value delimiters_;
    std::vector<Ref<Text>> delimiterTexts_;
    std::string joiner_;
    std::optional<double> timeout_;
    std::optional<std::chrono::steady_clock::time_point> deadline_;
    // The last text that was taken apart: loops over `word i of s` ask for the same one again.
    struct {
        Ref<Text> text;
        Unit unit = Unit::word;
        TextRules rules;
        std::vector<TextRange> ranges;
    } pieces_;
};

/// The question, with what goes wrong explained in the application's name.
template <typename Question, typename Specifier>
auto Evaluator::ask(Application& application, Question&& question, Specifier&& specifier)
{
    Limits::glance();
    try {
        beginQuestion(application);
        if constexpr (std::is_void_v<decltype(question())>) {
            question();
            endQuestion(application);
        } else {
            auto answer = question();
            endQuestion(application);
            return answer;
        }
    } catch (ScriptError& error) {
        explain(error, application, error.message.empty() ? specifier() : std::string());
        throw;
    } catch (const std::bad_alloc&) {
        throw ScriptError::outOfMemory();
    } catch (const std::exception&) {
        ScriptError error(ErrorNumber::handlerFailed);
        explain(error, application, {});
        throw error;
    }
}

template <typename Question>
auto Evaluator::ask(Application& application, Question&& question)
{
    return ask(application, std::forward<Question>(question), [] { return std::string(); });
}

} // namespace mervo::applescript
