#include "platform/applescript/evaluator/DictionaryTerms.h"
#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Reference.h"

namespace mervo::applescript {

namespace {

Insertion::Where whereOf(InsertionExpr::Where where)
{
    switch (where) {
    case InsertionExpr::Where::beginning:
        return Insertion::Where::beginning;
    case InsertionExpr::Where::end:
        return Insertion::Where::end;
    case InsertionExpr::Where::before:
        return Insertion::Where::before;
    case InsertionExpr::Where::after:
        return Insertion::Where::after;
    }
    return Insertion::Where::into;
}

/// The properties that something new is given, in the order written.
std::vector<std::pair<TermId, Value>> propertiesOf(const CommandExpr& expr, const Record& written)
{
    std::vector<std::pair<TermId, Value>> properties;
    for (const Record::Field& field : written.fields()) {
        const PropertyTerm* term = expr.dictionary->findProperty(*expr.newClass, field.label);
        if (!term)
            throw ScriptError::cannotSet(field.label.spelling() + " of a new " + expr.newClass->name, field.value);
        properties.emplace_back(term->id, dereferenced(field.value));
    }
    return properties;
}

} // namespace

/// The object of the innermost `tell`; null outside of one.
Ref<Object> Evaluator::targetObject()
{
    if (frame_->it.is(Kind::object))
        return Ref<Object>(&frame_->it.asObject());
    if (frame_->it.is(Kind::application))
        return applications_.rootOf(frame_->it);
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
    auto& entry = applications_.entryOf(target);
    Application& application = ApplicationRegistry::instance(entry);
    const Saving how = saving(expr);
    if (expr.command == LanguageCommand::quit) {
        applications_.ask(application, [&] {
            if (application.isRunning())
                applications_.authorized(entry).quit(how);
        });
        entry.isLaunched = false;
        return {};
    }
    applications_.launched(entry);
    if (expr.command == LanguageCommand::activate || expr.command == LanguageCommand::reopen)
        applications_.ask(application, [&] { application.activate(); });
    return {};
}

/// Where something goes: `end of messages of mb`, `after last paragraph`, or a container alone.
Insertion Evaluator::insertion(const Expr& expr)
{
    if (expr.kind != ExprKind::insertion)
        return placeOf(expr);
    const auto& written = as<InsertionExpr>(expr);
    const Expr& anchor = *written.container;
    // After the last of something that has nothing yet is its end: `after last paragraph` of an empty content.
    if (written.where == InsertionExpr::Where::after && anchor.kind == ExprKind::element) {
        const auto& element = as<ElementExpr>(anchor);
        const Value owner = fetched(container(element.container));
        if (owner.is(Kind::object) && !elementTerm(owner.asObject(), element))
            return {.where = Insertion::Where::end, .anchor = Ref<Object>(&owner.asObject())};
    }
    Insertion place = placeOf(anchor);
    place.where = whereOf(written.where);
    return place;
}

/// Into what a reference leads to.
Insertion Evaluator::placeOf(const Expr& anchor)
{
    Found found = find(anchor);
    if (found.every)
        return {.anchor = found.parent, .elementClass = found.every->id};
    const Value owner = dereferenced(std::move(found.value));
    if (owner.is(Kind::application))
        return {.anchor = applications_.rootOf(owner)};
    if (owner.is(Kind::object))
        return {.anchor = Ref<Object>(&owner.asObject())};
    throw ScriptError::cannotCoerce(owner, "reference");
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
    if (!request.place.anchor || &request.place.anchor->application().dictionary() != expr.dictionary)
        request.place.anchor = applications_.launchedOf(*expr.dictionary).root();
    Application& application = request.place.anchor->application();
    if (const Expr* data = labelled(expr, "with data"))
        request.data = argument(*data);
    if (const Expr* properties = labelled(expr, "with properties")) {
        const Value record = argument(*properties);
        if (!record.is(Kind::record))
            throw ScriptError::cannotCoerce(record, "record");
        request.properties = propertiesOf(expr, record.asRecord());
    }
    return applications_.ask(application, [&] { return application.make(request); });
}

/// delete, move, duplicate, close: each object of the reference in turn.
Value Evaluator::forEachObject(const CommandExpr& expr)
{
    const Value what = expr.direct ? argument(*expr.direct) : frame_->it;
    std::optional<Insertion> place;
    if (const Expr* to = labelled(expr, "to"))
        place = insertion(*to);
    const Saving how = saving(expr);
    if (!what.is(Kind::list))
        return forOneObject(expr.command, what, place, how);
    auto results = makeRef<List>();
    for (std::size_t i = 0; i < what.asList().size(); ++i) {
        Limits::step();
        if (Value result = forOneObject(expr.command, what.asList()[i], place, how); !result.is(Kind::none))
            results->append(std::move(result));
    }
    return results->size() > 0 ? Value::list(results) : Value();
}

Value Evaluator::forOneObject(
    LanguageCommand command, const Value& value, const std::optional<Insertion>& place, Saving how)
{
    const Value each = dereferenced(value);
    if (!each.is(Kind::object))
        throw ScriptError(ErrorNumber::notUnderstood, quoted(each) + " doesn’t understand this message.", each);
    Object& object = each.asObject();
    Application& application = object.application();
    const auto perform = [&]() -> Value {
        switch (command) {
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
    };
    return applications_.ask(application, perform, [&] { return specifierOf(object); });
}

Value Evaluator::dictionaryCommand(const CommandExpr& expr)
{
    CommandCall call;
    call.command = expr.commandTerm->id;
    call.target = targetObject();
    const auto valueOf = [&](const Expr& written) {
        return written.kind == ExprKind::insertion ? Value::object(insertion(written).anchor) : argument(written);
    };
    if (expr.direct) {
        call.direct = valueOf(*expr.direct);
    } else if (expr.commandTerm->direct == CommandTerm::Direct::required && call.target) {
        call.direct = Value::object(call.target);
    }
    for (const auto& [parameter, written] : expr.arguments)
        call.arguments.emplace_back(parameter, valueOf(*written));
    const bool isForTarget = call.target && &call.target->application().dictionary() == expr.dictionary;
    Application& application = isForTarget ? call.target->application() : applications_.launchedOf(*expr.dictionary);
    return applications_.ask(
        application, [&] { return application.perform(call); }, [&] { return quoted(call.direct); });
}

} // namespace mervo::applescript
