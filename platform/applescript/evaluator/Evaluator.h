#pragma once

#include "platform/applescript/evaluator/Applications.h"
#include "platform/applescript/evaluator/Elements.h"
#include "platform/applescript/evaluator/Found.h"
#include "platform/applescript/evaluator/Frame.h"
#include "platform/applescript/evaluator/SpecifierWriter.h"
#include "platform/applescript/evaluator/TextSettings.h"
#include "platform/applescript/syntax/SyntaxTree.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Reference.h"

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
///
/// What needs no more than values stands in files of its own: Operators, Elements, Properties, SpecifierWriter. Here
/// is what needs the variables, the target of the `tell`, or what is being filtered.
class Evaluator {
public:
    using Log = std::function<void(const std::string&)>;

    Evaluator(const Script& script, ApplicationRegistry& registry, Log log);
    Evaluator(const Evaluator&) = delete;
    Evaluator& operator=(const Evaluator&) = delete;
    ~Evaluator() = default;

    /// Runs the run handler. The result, fetched; none where there is none.
    Value run(const std::vector<std::string>& arguments);

private:
    enum class Flow { normal, exitRepeat, returned };
    class PartReference;

    // Evaluator.cpp: calls of handlers.
    Value call(const CallExpr& expr);
    Value invoke(const Handler& handler, std::vector<Value> arguments);
    void bindPattern(const Expr& pattern, const Value& value);

    // EvaluatorStatements.cpp
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

    // EvaluatorExpressions.cpp
    Value evaluate(const Expr& expr);
    Value operand(const Expr& expr) { return dereferenced(evaluate(expr)); }
    bool condition(const Expr& expr);
    Value& slot(const VariableUse& use) { return use.isGlobal ? globals_[use.slot] : frame_->locals[use.slot]; }
    Value* globalNamed(Symbol name);
    const Value& variable(const VariableUse& use, Place place);
    Value evaluateTarget(const TargetExpr& expr);
    Value evaluateApplication(const ApplicationExpr& expr);
    Value evaluateDate(const DateExpr& expr);
    Value evaluateList(const ListExpr& expr);
    Value evaluateRecord(const RecordExpr& expr);
    Value evaluateUnary(const Unary& expr);
    Value evaluateBinary(const Binary& expr);
    Value evaluateConcat(const Concat& expr);
    Value fastItem(const ElementExpr& expr);
    Value referenceTo(const ReferenceTo& expr);

    // EvaluatorReferences.cpp: what a reference leads to, and properties.
    Found find(const Expr& expr);
    Found ownerOf(const ExprPtr& written);
    Found container(const ExprPtr& written);
    Value fetched(Found found);
    std::size_t countOf(const Found& found);
    Found findProperty(const PropertyExpr& expr);
    Found propertyOfEvery(Found owner, const PropertyExpr& expr);
    Found propertyOfMany(const Value& list, const PropertyExpr& expr);
    Value propertyOf(const Value& owner, const PropertyExpr& expr);
    Value objectProperty(Object& object, const PropertyExpr& expr);
    Value allProperties(Object& object);
    Value applicationProperty(const Value& owner, const PropertyExpr& expr);
    Value referenceToPart(const Expr& part);

    // EvaluatorElements.cpp
    Keys keysOf(const ElementExpr& expr);
    Found findElement(const ElementExpr& expr);
    Value elementById(const ElementExpr& expr);
    Found elementOf(const Value& owner, const ElementExpr& expr, const Keys& keys);
    Found elementOfMany(const Value& list, const ElementExpr& expr, const Keys& keys);
    Found objectElement(const Ref<Object>& owner, const ElementExpr& expr, const Keys& keys);
    Value textElement(const Value& owner, const ElementExpr& expr, const Keys& keys);
    Value textRange(const Value& owner, const ElementExpr& expr, const Keys& keys);
    TextRange pieceOf(const Value& owner, const ElementExpr& bound);
    [[noreturn]] void failElement(int number, const ElementExpr& expr, const Keys& keys, const Value& owner);

    // EvaluatorFilters.cpp
    Found findFilter(const FilterExpr& expr);
    Found filtered(const Ref<Object>& owner, const FilterExpr& expr);
    Ref<List> matchesOf(const Ref<Object>& owner, const ClassTerm& elements, const Expr& holds, std::size_t most);
    Value column(const PropertyExpr& expr);
    Value onceForAll(const Expr& expr);

    // EvaluatorAssignment.cpp
    void assign(const Expr& target, const Value& value);
    void assignList(const ListExpr& target, const Value& value);
    void assignProperty(const PropertyExpr& target, const Value& value);
    void setProperty(const Value& owner, const PropertyExpr& target, const Value& value);
    void setEach(const List& owners, const std::function<void(const Value&)>& set);
    void setObjectProperty(Object& object, const PropertyExpr& target, const Value& value);
    void assignElement(const ElementExpr& target, const Value& value);
    void assignInsertion(const InsertionExpr& target, const Value& value);

    // EvaluatorCommands.cpp: of the language.
    Value command(const CommandExpr& expr);
    Value count(const CommandExpr& expr);
    bool exists(const CommandExpr& expr);
    bool isThere(const Found& found);
    Value offset(const CommandExpr& expr);
    Value round(const CommandExpr& expr);
    Value randomNumber(const CommandExpr& expr);
    Value argument(const Expr& expr);
    static const Expr* labelled(const CommandExpr& expr, const char* label);

    // EvaluatorApplications.cpp: commands to applications and their objects.
    Ref<Object> targetObject();
    Saving saving(const CommandExpr& expr);
    Value applicationCommand(const CommandExpr& expr);
    Insertion insertion(const Expr& expr);
    Insertion placeOf(const Expr& anchor);
    Value make(const CommandExpr& expr);
    Value forEachObject(const CommandExpr& expr);
    Value forOneObject(LanguageCommand command, const Value& value, const std::optional<Insertion>& place, Saving how);
    Value dictionaryCommand(const CommandExpr& expr);

    /// Lists that hold themselves are freed once everything else is gone.
    struct Leftovers {
        Leftovers() = default;
        Leftovers(const Leftovers&) = delete;
        Leftovers& operator=(const Leftovers&) = delete;
        ~Leftovers();
    } leftovers_;
    const Script& script_;
    Log log_;
    Applications applications_;
    SpecifierWriter writer_;
    TextSettings texts_;
    std::vector<Value> globals_;
    Frame* frame_ = nullptr;
};

} // namespace mervo::applescript
