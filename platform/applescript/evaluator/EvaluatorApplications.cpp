#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/StandardErrors.h"

namespace mervo::applescript {

/// Gives a question to an application the time that `with timeout` allows.
void Evaluator::beginQuestion(Application& application)
{
    using namespace std::chrono;
    deadline_.reset();
    if (timeout_ && *timeout_ < 1e9) {
        deadline_ =
            steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(std::max(*timeout_, 0.0)));
    }
    application.setDeadline(deadline_);
}

void Evaluator::endQuestion(Application&)
{
    if (deadline_ && std::chrono::steady_clock::now() > *deadline_)
        throw ScriptError(ErrorNumber::timedOut);
}

/// Gives an error its standard words where it has none, and the application's name in front.
void Evaluator::explain(ScriptError& error, Application& application, const std::string& specifier) const
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

ApplicationRegistry::Entry& Evaluator::entryOf(const Value& application)
{
    if (ApplicationRegistry::Entry* entry = registry_.findByName(application.view()))
        return *entry;
    throw ScriptError::noSuchObject("application " + quoted(Value::text(application.view())), application);
}

/// Any command sent to an application first starts it.
Application& Evaluator::launched(ApplicationRegistry::Entry& entry)
{
    Application& application = ApplicationRegistry::instance(entry);
    if (!entry.isLaunched) {
        ask(application, [&] { application.launch(); });
        entry.isLaunched = true;
    }
    return application;
}

Ref<Object> Evaluator::rootOf(const Value& application)
{
    return launched(entryOf(application)).root();
}

/// The object of the innermost `tell`; null outside of one.
Ref<Object> Evaluator::targetObject()
{
    if (frame_->it.is(Kind::object))
        return Ref<Object>(&frame_->it.asObject());
    if (frame_->it.is(Kind::application))
        return rootOf(frame_->it);
    return {};
}

Saving Evaluator::saving(const CommandExpr& expr)
{
    const Expr* argument = labelled(expr, "saving");
    if (!argument)
        return Saving::unspecified;
    const Value value = operand(*argument);
    if (value.is(Kind::constant)) {
        const std::string& word = value.asSymbol().spelling();
        if (word == "yes")
            return Saving::yes;
        if (word == "no")
            return Saving::no;
        if (word == "ask")
            return Saving::ask;
    }
    throw ScriptError::cannotCoerce(value, "constant");
}

/// activate, launch, quit, reopen, run
Value Evaluator::applicationCommand(const CommandExpr& expr)
{
    Value target = expr.direct ? argument(*expr.direct) : frame_->it;
    if (target.is(Kind::object))
        target = Value::application(target.asObject().application().dictionary().applicationName());
    if (!target.is(Kind::application))
        throw ScriptError(ErrorNumber::notUnderstood, "Only an application understands this command.", target);
    ApplicationRegistry::Entry& entry = entryOf(target);
    Application& application = ApplicationRegistry::instance(entry);
    const Saving how = saving(expr);
    if (expr.command == LanguageCommand::quit) {
        ask(application, [&] {
            if (application.isRunning())
                application.quit(how);
        });
        entry.isLaunched = false;
        return {};
    }
    launched(entry);
    if (expr.command == LanguageCommand::activate || expr.command == LanguageCommand::reopen)
        ask(application, [&] { application.activate(); });
    return {};
}

/// Where something goes: `end of messages of mb`, `after last paragraph`, or a container alone.
Insertion Evaluator::insertion(const Expr& expr)
{
    Insertion place;
    const Expr* anchor = &expr;
    if (expr.kind == ExprKind::insertion) {
        const auto& written = as<InsertionExpr>(expr);
        anchor = written.container.get();
        switch (written.where) {
        case InsertionExpr::Where::beginning:
            place.where = Insertion::Where::beginning;
            break;
        case InsertionExpr::Where::end:
            place.where = Insertion::Where::end;
            break;
        case InsertionExpr::Where::before:
            place.where = Insertion::Where::before;
            break;
        case InsertionExpr::Where::after:
            place.where = Insertion::Where::after;
            break;
        }
        // After the last of something that has nothing yet is its end: `after last paragraph` of an empty content.
        if (written.where == InsertionExpr::Where::after && anchor->kind == ExprKind::element) {
            const auto& element = as<ElementExpr>(*anchor);
            const Value owner = fetched(container(element.container));
            if (owner.is(Kind::object) && !elementClass(owner.asObject(), element)) {
                place.where = Insertion::Where::end;
                place.anchor = Ref<Object>(&owner.asObject());
                return place;
            }
        }
    }
    Found found = find(*anchor);
    if (found.every) {
        place.anchor = found.parent;
        place.elementClass = found.every->id;
        return place;
    }
    const Value owner = dereferenced(std::move(found.value));
    if (owner.is(Kind::application))
        place.anchor = rootOf(owner);
    else if (owner.is(Kind::object))
        place.anchor = Ref<Object>(&owner.asObject());
    else
        throw ScriptError::cannotCoerce(owner, "reference");
    return place;
}

Value Evaluator::make(const CommandExpr& expr)
{
    MakeRequest request;
    request.newClass = expr.newClass;
    if (const Expr* place = labelled(expr, "at")) {
        request.place = insertion(*place);
        request.hasPlace = true;
    } else {
        request.place.anchor = targetObject();
    }
    if (!request.place.anchor || &request.place.anchor->application().dictionary() != expr.dictionary) {
        ApplicationRegistry::Entry* entry = registry_.findByName(expr.dictionary->applicationName());
        request.place.anchor = launched(*entry).root();
    }
    Application& application = request.place.anchor->application();
    if (const Expr* data = labelled(expr, "with data"))
        request.data = argument(*data);
    if (const Expr* properties = labelled(expr, "with properties")) {
        const Value record = argument(*properties);
        if (!record.is(Kind::record))
            throw ScriptError::cannotCoerce(record, "record");
        for (const Record::Field& field : record.asRecord().fields()) {
            const PropertyTerm* term = expr.dictionary->findProperty(*request.newClass, field.label);
            if (!term)
                failSet(field.label.spelling() + " of a new " + request.newClass->name, field.value);
            request.properties.emplace_back(term->id, dereferenced(field.value));
        }
    }
    return ask(application, [&] { return application.make(request); });
}

/// delete, move, duplicate, close: each object of the reference in turn.
Value Evaluator::forEachObject(const CommandExpr& expr)
{
    const Value what = expr.direct ? argument(*expr.direct) : frame_->it;
    std::optional<Insertion> place;
    if (const Expr* to = labelled(expr, "to"))
        place = insertion(*to);
    const Saving how = saving(expr);
    const auto one = [&](const Value& value) {
        const Value each = dereferenced(value);
        if (!each.is(Kind::object)) {
            ScriptError error(ErrorNumber::notUnderstood, quoted(each) + " doesn’t understand this message.", each);
            throw error;
        }
        Object& object = each.asObject();
        Application& application = object.application();
        return ask(
            application,
            [&]() -> Value {
                switch (expr.command) {
                case LanguageCommand::remove:
                    application.remove(object);
                    return {};
                case LanguageCommand::close:
                    application.close(object, how);
                    return {};
                case LanguageCommand::duplicate:
                    return application.duplicate(object, place);
                default:
                    if (!place)
                        throw ScriptError(ErrorNumber::wrongParameters, "A move needs the place to move to.");
                    return application.move(object, *place);
                }
            },
            [&] { return specifierOf(object); });
    };
    if (!what.is(Kind::list))
        return one(what);
    auto results = makeRef<List>();
    for (std::size_t i = 0; i < what.asList().size(); ++i) {
        Limits::step();
        if (Value result = one(what.asList()[i]); !result.is(Kind::none))
            results->append(std::move(result));
    }
    return results->size() > 0 ? Value::list(results) : Value();
}

Value Evaluator::dictionaryCommand(const CommandExpr& expr)
{
    CommandCall call;
    call.command = expr.commandTerm->id;
    call.target = targetObject();
    const auto valueOf = [&](const Expr& written) {
        return written.kind == ExprKind::insertion ? Value::object(insertion(written).anchor) : argument(written);
    };
    if (expr.direct)
        call.direct = valueOf(*expr.direct);
    else if (expr.commandTerm->direct == CommandTerm::Direct::required && call.target)
        call.direct = Value::object(call.target);
    for (const auto& [parameter, written] : expr.arguments)
        call.arguments.emplace_back(parameter, valueOf(*written));
    Application* application = nullptr;
    if (call.target && &call.target->application().dictionary() == expr.dictionary)
        application = &call.target->application();
    else if (ApplicationRegistry::Entry* entry = registry_.findByName(expr.dictionary->applicationName()))
        application = &launched(*entry);
    if (!application)
        throw ScriptError::noSuchObject("application \"" + expr.dictionary->applicationName() + "\"");
    return ask(
        *application, [&] { return application->perform(call); }, [&] { return quoted(call.direct); });
}

} // namespace mervo::applescript
