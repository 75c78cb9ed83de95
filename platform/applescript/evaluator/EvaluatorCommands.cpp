#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <random>
#include <span>
#include <unistd.h>

namespace mervo::applescript {

namespace {

double rounded(double value, std::string_view how)
{
    if (how == "up")
        return std::ceil(value);
    if (how == "down")
        return std::floor(value);
    if (how == "toward zero")
        return std::trunc(value);
    if (how == "as taught in school")
        return std::round(value); // halves away from zero
    return std::nearbyint(value); // halves to even
}

/// Whole bounds give a whole number.
Value randomBetween(const Value& low, const Value& high)
{
    static thread_local std::mt19937_64 source{std::random_device{}()};
    const bool isSwapped = high.asNumber() < low.asNumber();
    const Value& first = isSwapped ? high : low;
    const Value& last = isSwapped ? low : high;
    if (low.is(Kind::integer) && high.is(Kind::integer))
        return Value::integer(std::uniform_int_distribution<std::int64_t>(first.asInteger(), last.asInteger())(source));
    const double part = std::uniform_real_distribution<double>(0, 1)(source);
    return Value::real(first.asNumber() + part * (last.asNumber() - first.asNumber()));
}

void delay(double seconds)
{
    if (!(seconds > 0))
        return;
    Limits::step();
    const double whole = std::floor(std::min(seconds, 1e9));
    timespec left{static_cast<time_t>(whole), static_cast<long>(std::min((seconds - whole) * 1e9, 999999999.0))};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) { }
}

} // namespace

/// Null when there is no argument of that label.
const Expr* Evaluator::labelled(const CommandExpr& expr, const char* label)
{
    const Symbol name(label);
    for (const auto& [known, argument] : expr.labelled) {
        if (known == name)
            return argument.get();
    }
    return nullptr;
}

/// An argument: references looked up, `every x` as a list.
Value Evaluator::argument(const Expr& expr)
{
    return dereferenced(fetched(find(expr)));
}

Value Evaluator::command(const CommandExpr& expr)
{
    if (expr.commandTerm)
        return dictionaryCommand(expr);
    switch (expr.command) {
    case LanguageCommand::none:
        break;
    case LanguageCommand::get:
        return fetched(find(*expr.direct));
    case LanguageCommand::count:
        return count(expr);
    case LanguageCommand::exists:
        return Value::boolean(exists(expr));
    case LanguageCommand::currentDate:
        return Value::date(Date::fromUnix(std::time(nullptr)));
    case LanguageCommand::delay:
        delay(expr.direct ? toReal(operand(*expr.direct)) : 0);
        break;
    case LanguageCommand::log:
        log_(expr.direct ? displayForm(argument(*expr.direct)) : std::string());
        break;
    case LanguageCommand::offset:
        return offset(expr);
    case LanguageCommand::round:
        return round(expr);
    case LanguageCommand::randomNumber:
        return randomNumber(expr);
    case LanguageCommand::pathTo: {
        const char* home = std::getenv("HOME");
        return Value::file(std::string(home ? home : "") + "/");
    }
    case LanguageCommand::doShellScript:
        throw ScriptError::notUnderstood(Value::script(), "do shell script");
    case LanguageCommand::make:
        return make(expr);
    case LanguageCommand::close:
    case LanguageCommand::duplicate:
    case LanguageCommand::move:
    case LanguageCommand::remove:
        return forEachObject(expr);
    case LanguageCommand::activate:
    case LanguageCommand::launch:
    case LanguageCommand::quit:
    case LanguageCommand::reopen:
    case LanguageCommand::run:
        return applicationCommand(expr);
    }
    return {};
}

Value Evaluator::count(const CommandExpr& expr)
{
    const Found found = find(*expr.direct);
    if (found.every)
        return Value::integer(static_cast<std::int64_t>(countOf(found)));
    const Value value = dereferenced(found.value);
    switch (value.kind()) {
    case Kind::list:
        return Value::integer(static_cast<std::int64_t>(value.asList().size()));
    case Kind::text:
        return Value::integer(static_cast<std::int64_t>(value.asText().characterCount()));
    case Kind::record:
        return Value::integer(static_cast<std::int64_t>(value.asRecord().size()));
    default:
        throw ScriptError::notUnderstood(value, "count");
    }
}

bool Evaluator::exists(const CommandExpr& expr)
{
    try {
        return isThere(find(*expr.direct));
    } catch (const ScriptError& error) {
        if (error.number == ErrorNumber::noSuchObject || error.number == ErrorNumber::invalidIndex
            || error.number == ErrorNumber::fileNotFound)
            return false;
        throw;
    }
}

bool Evaluator::isThere(const Found& found)
{
    if (found.every)
        return countOf(found) > 0;
    const Value value = dereferenced(found.value);
    switch (value.kind()) {
    case Kind::none:
    case Kind::missing:
        return false;
    case Kind::list:
        return !found.isMany || value.asList().size() > 0;
    case Kind::file:
        return ::access(std::string(value.view()).c_str(), F_OK) == 0;
    case Kind::application:
        return applications_.withName(value.view()) != nullptr;
    case Kind::object:
        return applications_.ask(value.asObject().application(), [&] { return value.asObject().exists(); });
    default:
        return true;
    }
}

Value Evaluator::offset(const CommandExpr& expr)
{
    const Ref<Text> part = toText(operand(*expr.direct), texts_.joiner());
    const Ref<Text> text = toText(operand(*labelled(expr, "in")), texts_.joiner());
    const std::vector<TextRange> found = findAll(*text, std::span(&part, 1), texts_.rules, 1);
    return Value::integer(found.empty() ? 0 : static_cast<std::int64_t>(text->characterAt(found.front().start)) + 1);
}

Value Evaluator::round(const CommandExpr& expr)
{
    const double value = toReal(operand(*expr.direct));
    const Expr* rounding = labelled(expr, "rounding");
    const double result =
        rounded(value, rounding ? as<Literal>(*rounding).value.asSymbol().spelling() : std::string_view());
    return std::fabs(result) < 1e15 ? Value::integer(static_cast<std::int64_t>(result)) : Value::real(result);
}

/// Without bounds a real from 0 to 1.
Value Evaluator::randomNumber(const CommandExpr& expr)
{
    if (const Expr* from = labelled(expr, "from")) {
        const Value low = toNumber(operand(*from));
        return randomBetween(low, toNumber(operand(*labelled(expr, "to"))));
    }
    return randomBetween(Value::integer(0), expr.direct ? toNumber(operand(*expr.direct)) : Value::real(1));
}

} // namespace mervo::applescript
