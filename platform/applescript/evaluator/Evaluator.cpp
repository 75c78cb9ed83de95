#include "platform/applescript/evaluator/Evaluator.h"

#include "platform/applescript/evaluator/Restored.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Reference.h"

namespace mervo::applescript {

Evaluator::Leftovers::~Leftovers()
{
    Container::releaseAll();
}

Evaluator::Evaluator(const Script& script, ApplicationRegistry& registry, Log log)
    : script_(script)
    , log_(std::move(log))
    , applications_(registry)
    , writer_(
          script.source, [this](const VariableUse& use) { return slot(use); },
          [this](const ElementExpr& expr) { return keysOf(expr); })
    , globals_(script.globalNames.size())
{
}

Value Evaluator::run(const std::vector<std::string>& arguments)
{
    Frame frame;
    frame.it = Value::script();
    {
        const Restored<Frame*> here(frame_, &frame);
        for (const auto& property : script_.properties)
            globals_[property->variable.slot] = evaluate(*property->value);
    }
    std::vector<Value> values;
    if (!script_.run->parameters.empty()) {
        auto list = makeRef<List>();
        for (const std::string& argument : arguments)
            list->append(Value::text(argument));
        values.push_back(Value::list(list));
    }
    return dereferenced(invoke(*script_.run, std::move(values)));
}

Value Evaluator::call(const CallExpr& expr)
{
    const Value target = expr.target ? operand(*expr.target) : expr.isMine ? Value::script() : frame_->it;
    if (target.is(Kind::object) || target.is(Kind::application)) {
        Application& application = target.is(Kind::object) ? target.asObject().application()
                                                           : applications_.launched(applications_.entryOf(target));
        failIn(application,
            ScriptError(ErrorNumber::notUnderstood, "Can’t continue " + expr.name.spelling() + ".", target));
    }
    const auto handler = script_.handlers.find(expr.name.number());
    if (handler == script_.handlers.end())
        throw ScriptError::notUnderstood(Value::script(), expr.name.spelling());
    std::vector<Value> arguments;
    arguments.reserve(expr.arguments.size());
    for (const ExprPtr& argument : expr.arguments)
        arguments.push_back(evaluate(*argument));
    return invoke(*handler->second, std::move(arguments));
}

Value Evaluator::invoke(const Handler& handler, std::vector<Value> arguments)
{
    Limits::enter();
    if (arguments.size() != handler.parameters.size()) {
        std::string names;
        for (const ExprPtr& parameter : handler.parameters) {
            names += (names.empty() ? "" : ", ")
                + (parameter->kind == ExprKind::variable ? as<Variable>(*parameter).use.name.spelling() : "{…}");
        }
        throw ScriptError(ErrorNumber::wrongParameters,
            quoted(Value::list(std::move(arguments))) + " doesn’t match the parameters {" + names + "} for "
                + handler.name.spelling() + ".");
    }
    Frame frame;
    frame.locals.resize(handler.localCount);
    frame.it = Value::script();
    const Restored<Frame*> here(frame_, &frame);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        bindPattern(*handler.parameters[i], arguments[i]);
    if (execute(handler.body) == Flow::returned)
        return std::move(frame.returned);
    return std::move(frame.result);
}

void Evaluator::bindPattern(const Expr& pattern, const Value& value)
{
    if (pattern.kind == ExprKind::variable) {
        slot(as<Variable>(pattern).use) = value;
    } else {
        assignList(as<ListExpr>(pattern), value);
    }
}

} // namespace mervo::applescript
