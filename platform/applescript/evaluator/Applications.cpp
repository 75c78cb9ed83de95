#include "platform/applescript/evaluator/Applications.h"

#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/StandardErrors.h"

#include <algorithm>

namespace mervo::applescript {

void explain(ScriptError& error, Application& application, const std::string& specifier)
{
    if (error.isFromApplication)
        return;
    const std::string& name = application.dictionary().applicationName();
    if (error.message.empty()) {
        switch (error.number) {
        case ErrorNumber::noSuchObject:
            error.message = "Can’t get " + specifier + ".";
            break;
        case ErrorNumber::invalidIndex:
            error.message = "Can’t get " + specifier + ". Invalid index.";
            break;
        case ErrorNumber::accessNotAllowed:
            error.message = "Can’t get " + specifier + ". Access not allowed.";
            break;
        case ErrorNumber::cannotSet:
            error.message = "Can’t set " + specifier + ".";
            break;
        case ErrorNumber::notAuthorized:
            error.message = "Not authorized to send Apple events to " + name + ".";
            break;
        default:
            error.message = standardMessage(error.number);
        }
    }
    error.isFromApplication = true;
    if (error.number != ErrorNumber::notAuthorized && error.number != ErrorNumber::stackOverflow
        && error.number != ErrorNumber::outOfMemory)
        error.message = name + " got an error: " + error.message;
}

void failIn(Application& application, ScriptError error, const std::string& specifier)
{
    explain(error, application, specifier);
    throw error;
}

Applications::Entry& Applications::entryOf(const Value& application) const
{
    if (Entry* entry = withName(application.view()))
        return *entry;
    throw ScriptError::noSuchObject("application " + quoted(Value::text(application.view())), application);
}

Application& Applications::authorized(Entry& entry)
{
    Application& application = ApplicationRegistry::instance(entry);
    try {
        registry_.authorize(entry);
    } catch (ScriptError& error) {
        explain(error, application);
        throw;
    }
    return application;
}

Application& Applications::launched(Entry& entry)
{
    Application& application = authorized(entry);
    if (!entry.isLaunched) {
        ask(application, [&] { application.launch(); });
        entry.isLaunched = true;
    }
    return application;
}

Application& Applications::launchedOf(const Dictionary& dictionary)
{
    if (Entry* entry = withName(dictionary.applicationName()))
        return launched(*entry);
    throw ScriptError::noSuchObject("application \"" + dictionary.applicationName() + "\"");
}

void Applications::begin(Application& application)
{
    using namespace std::chrono;
    deadline_.reset();
    if (timeout && *timeout < 1e9) {
        deadline_ =
            steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(std::max(*timeout, 0.0)));
    }
    application.setDeadline(deadline_);
}

void Applications::end() const
{
    if (deadline_ && std::chrono::steady_clock::now() > *deadline_)
        throw ScriptError(ErrorNumber::timedOut);
}

} // namespace mervo::applescript
