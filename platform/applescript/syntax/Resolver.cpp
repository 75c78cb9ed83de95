#include "platform/applescript/syntax/Resolver.h"

#include <algorithm>
#include <unordered_map>

namespace mervo::applescript {

namespace {

class Slots {
public:
    std::uint32_t of(Symbol name) { return numbers_.try_emplace(name.number(), next()).first->second; }
    bool has(Symbol name) const { return numbers_.contains(name.number()); }
    std::uint32_t count() const { return static_cast<std::uint32_t>(numbers_.size()); }

private:
    std::uint32_t next() const { return count(); }

    std::unordered_map<std::uint32_t, std::uint32_t> numbers_;
};

bool has(const std::vector<Symbol>& names, Symbol name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

class Resolver {
public:
    explicit Resolver(Script& script)
        : script_(script)
    {
    }

    void run()
    {
        for (const auto& property : script_.properties)
            bindGlobal(property->variable);
        for (const auto& [name, handler] : script_.handlers)
            resolve(*handler, Names::local);
        resolve(*script_.run, script_.hasExplicitRun ? Names::local : Names::ofScript);
    }

private:
    void bindGlobal(VariableUse& use)
    {
        const bool isNew = !globals_.has(use.name);
        use.isGlobal = true;
        use.slot = globals_.of(use.name);
        if (isNew)
            script_.globalNames.push_back(use.name);
    }

    bool isProperty(Symbol name) const
    {
        return std::any_of(script_.properties.begin(), script_.properties.end(),
            [&](const auto& property) { return property->variable.name == name; });
    }

    /// Where names go that nothing declares.
    enum class Names { local, ofScript };

    void resolve(Handler& handler, Names undeclared)
    {
        Slots locals;
        for (VariableUse* use : handler.uses) {
            const bool isLocal = has(handler.locals, use->name)
                || !(undeclared == Names::ofScript || has(handler.globals, use->name) || isProperty(use->name));
            if (!use->isGlobal && isLocal) {
                use->slot = locals.of(use->name);
            } else {
                bindGlobal(*use);
            }
        }
        handler.localCount = locals.count();
    }

    Script& script_;
    Slots globals_;
};

} // namespace

void resolveNames(Script& script)
{
    Resolver(script).run();
}

} // namespace mervo::applescript
