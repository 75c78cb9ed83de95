#include "platform/applescript/values/StandardErrors.h"

#include "platform/applescript/values/ScriptError.h"

namespace mervo::applescript {

std::string standardMessage(int number)
{
    switch (number) {
    case ErrorNumber::userCanceled:
        return "User canceled.";
    case ErrorNumber::general:
        return "An error has occurred.";
    case ErrorNumber::timedOut:
        return "AppleEvent timed out.";
    case ErrorNumber::notRunning:
        return "Application isn’t running.";
    case ErrorNumber::handlerFailed:
        return "AppleEvent handler failed.";
    case ErrorNumber::stackOverflow:
        return "Stack overflow.";
    case ErrorNumber::fileNotFound:
        return "File wasn’t found.";
    default:
        return "An error of type " + std::to_string(number) + " has occurred.";
    }
}

} // namespace mervo::applescript
