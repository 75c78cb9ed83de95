#include "platform/applescript/values/Application.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/unicode.h"

#include <algorithm>

namespace mervo::applescript {

namespace {

const Value* find(const std::vector<std::pair<TermId, Value>>& pairs, TermId id) noexcept
{
    for (const auto& [term, value] : pairs) {
        if (term == id)
            return &value;
    }
    return nullptr;
}

[[noreturn]] void refuse(const char* command)
{
    throw ScriptError(ErrorNumber::notUnderstood, std::string("Can’t continue ") + command + ".");
}

} // namespace

const Value* MakeRequest::property(TermId id) const noexcept
{
    return find(properties, id);
}

const Value* CommandCall::argument(TermId parameter) const noexcept
{
    return find(arguments, parameter);
}

bool CommandCall::isOn(TermId parameter) const
{
    const Value* value = argument(parameter);
    return value != nullptr && toBoolean(*value);
}

Value Application::make(const MakeRequest&)
{
    refuse("make");
}

void Application::remove(Object&)
{
    refuse("delete");
}

Value Application::move(Object&, const Insertion&)
{
    refuse("move");
}

Value Application::duplicate(Object&, const std::optional<Insertion>&)
{
    refuse("duplicate");
}

void Application::close(Object&, Saving)
{
    refuse("close");
}

Value Application::perform(const CommandCall& call)
{
    for (const CommandTerm& command : dictionary().commands()) {
        if (command.id == call.command)
            refuse(command.name.c_str());
    }
    refuse("the command");
}

void ApplicationRegistry::add(
    std::vector<std::string> names, std::string bundleId, DictionarySource dictionary, Factory factory)
{
    entries_.push_back(std::make_unique<Entry>(
        Entry{std::move(names), std::move(bundleId), std::move(dictionary), std::move(factory), nullptr, false}));
}

ApplicationRegistry::Entry* ApplicationRegistry::findByName(std::string_view name)
{
    const std::string folded = platform::foldCase(name);
    for (const auto& entry : entries_) {
        for (const std::string& known : entry->names) {
            if (platform::foldCase(known) == folded)
                return entry.get();
        }
    }
    return nullptr;
}

ApplicationRegistry::Entry* ApplicationRegistry::findByBundleId(std::string_view bundleId)
{
    const std::string folded = platform::foldCase(bundleId);
    for (const auto& entry : entries_) {
        if (platform::foldCase(entry->bundleId) == folded)
            return entry.get();
    }
    return nullptr;
}

void ApplicationRegistry::finish()
{
    for (const auto& entry : entries_) {
        if (!entry->isLaunched)
            continue;
        try {
            entry->instance->finish();
        } catch (ScriptError& error) {
            error.message = entry->names.front() + " got an error: " + error.message;
            throw;
        }
    }
}

void ApplicationRegistry::authorize(Entry& entry)
{
    if (guard_ && !entry.isAuthorized)
        guard_(entry);
    entry.isAuthorized = true;
}

Application& ApplicationRegistry::instance(Entry& entry)
{
    if (!entry.instance)
        entry.instance = entry.factory();
    return *entry.instance;
}

} // namespace mervo::applescript
