#include "platform/applescript/values/Dictionary.h"

namespace mervo::applescript {

Dictionary::Dictionary(std::string applicationName, std::vector<ClassTerm> classes, std::vector<CommandTerm> commands,
    std::vector<std::string> enumerators)
    : name_(std::move(applicationName))
    , classes_(std::move(classes))
    , commands_(std::move(commands))
    , enumerators_(std::move(enumerators))
{
    entries_.resize(classes_.size());
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        for (const PropertyTerm* property : properties(classes_[i])) {
            entries_[i].push_back({Symbol(property->name), property});
            for (const std::string& synonym : property->synonyms)
                entries_[i].push_back({Symbol(synonym), property});
        }
    }
}

const ClassTerm* Dictionary::findClass(TermId id) const noexcept
{
    for (const ClassTerm& candidate : classes_) {
        if (candidate.id == id)
            return &candidate;
    }
    return nullptr;
}

const ClassTerm* Dictionary::findClass(Symbol name) const noexcept
{
    for (const ClassTerm& candidate : classes_) {
        if (Symbol(candidate.name) == name)
            return &candidate;
        for (const std::string& synonym : candidate.synonyms) {
            if (Symbol(synonym) == name)
                return &candidate;
        }
    }
    return nullptr;
}

const PropertyTerm* Dictionary::findProperty(const ClassTerm& owner, TermId id) const noexcept
{
    const auto index = static_cast<std::size_t>(&owner - classes_.data());
    for (const Entry& entry : entries_[index]) {
        if (entry.property->id == id)
            return entry.property;
    }
    return nullptr;
}

const PropertyTerm* Dictionary::findProperty(const ClassTerm& owner, Symbol name) const noexcept
{
    const auto index = static_cast<std::size_t>(&owner - classes_.data());
    for (const Entry& entry : entries_[index]) {
        if (entry.name == name)
            return entry.property;
    }
    return nullptr;
}

std::vector<const PropertyTerm*> Dictionary::properties(const ClassTerm& owner) const
{
    std::vector<const PropertyTerm*> found;
    const ClassTerm* next = &owner;
    for (std::size_t depth = 0; next && depth < classes_.size(); ++depth) {
        for (const PropertyTerm& property : next->properties)
            found.push_back(&property);
        next = next->parent == kNoTerm ? nullptr : findClass(next->parent);
    }
    return found;
}

bool Dictionary::hasElement(const ClassTerm& owner, TermId elementClass) const noexcept
{
    const ClassTerm* next = &owner;
    for (std::size_t depth = 0; next && depth < classes_.size(); ++depth) {
        for (const TermId element : next->elements) {
            if (element == elementClass)
                return true;
        }
        next = next->parent == kNoTerm ? nullptr : findClass(next->parent);
    }
    return false;
}

} // namespace mervo::applescript
