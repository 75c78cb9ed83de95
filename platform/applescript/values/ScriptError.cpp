#include "platform/applescript/values/ScriptError.h"

#include "platform/applescript/values/Display.h"

namespace mervo::applescript {

ScriptError::ScriptError(int errorNumber, std::string text, Value about)
    : number(errorNumber)
    , message(std::move(text))
    , offender(std::move(about))
{
}

ScriptError ScriptError::at(Place place, int number, std::string message)
{
    ScriptError error(number, std::move(message));
    error.isPlaced = true;
    error.place = place;
    return error;
}

ScriptError ScriptError::cannotCoerce(const Value& value, std::string_view className)
{
    ScriptError error(
        ErrorNumber::cannotCoerce, "Can’t make " + quoted(value) + " into type " + std::string(className) + ".", value);
    error.expectedClass = Value::classTerm(Symbol(className));
    return error;
}

ScriptError ScriptError::noSuchObject(const std::string& specifier, Value offender)
{
    return ScriptError(ErrorNumber::noSuchObject, "Can’t get " + specifier + ".", std::move(offender));
}

ScriptError ScriptError::invalidIndex(const std::string& specifier, Value offender)
{
    return ScriptError(ErrorNumber::invalidIndex, "Can’t get " + specifier + ". Invalid index.", std::move(offender));
}

ScriptError ScriptError::cannotSet(const std::string& specifier, const Value& value)
{
    return ScriptError(ErrorNumber::cannotSet, "Can’t set " + specifier + " to " + quoted(value) + ".", value);
}

ScriptError ScriptError::notUnderstood(const Value& receiver, const std::string& message)
{
    return ScriptError(
        ErrorNumber::notUnderstood, quoted(receiver) + " doesn’t understand the “" + message + "” message.", receiver);
}

ScriptError ScriptError::stackOverflow()
{
    return ScriptError(ErrorNumber::stackOverflow, "Stack overflow.");
}

ScriptError ScriptError::outOfMemory()
{
    return ScriptError(ErrorNumber::outOfMemory, "Out of memory: the script’s values are larger than is allowed.");
}

} // namespace mervo::applescript
