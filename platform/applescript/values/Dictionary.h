#pragma once

#include "platform/applescript/values/Symbol.h"

#include <string>
#include <vector>

namespace mervo::applescript {

/// A number by which an object model knows its own terms: an enumerator of the model. Positive; unique among the
/// properties, among the classes and among the commands of one dictionary. One property name has one number, whatever
/// class it stands in.
using TermId = int;
inline constexpr TermId kNoTerm = 0;

/// Terms that every application has; the interpreter knows them by these numbers.
namespace CommonTerm {
inline constexpr TermId applicationClass = -1; // the class of the root object
inline constexpr TermId name = -2; // the property `name`, used by `mailbox "INBOX"`
inline constexpr TermId id = -3; // the property `id`, used by `message id 7`
} // namespace CommonTerm

struct PropertyTerm {
    enum class Access { readOnly, settable };

    TermId id = kNoTerm;
    std::string name;
    Access access = Access::readOnly;
    std::vector<std::string> synonyms = {};
};

inline constexpr PropertyTerm::Access kSettable = PropertyTerm::Access::settable;

struct ClassTerm {
    TermId id = kNoTerm;
    std::string name;
    std::string plural;
    std::vector<PropertyTerm> properties = {};
    std::vector<TermId> elements = {};
    TermId parent = kNoTerm; // its properties and elements are inherited
    std::vector<std::string> synonyms = {}; // other singular names: "service"
    std::vector<std::string> pluralSynonyms = {}; // "services"
};

struct ParameterTerm {
    TermId id = kNoTerm;
    std::string label; // "with properties", "opening window", "to"
};

struct CommandTerm {
    enum class Direct { none, optional, required };

    TermId id = kNoTerm;
    std::string name;
    std::vector<ParameterTerm> parameters = {};
    Direct direct = Direct::required;
};

/// The words that an application adds to the language inside `tell application "X"`: plain data, checked and indexed
/// once. Multi-word terms are matched longest first. The commands that every application has (`make`, `delete`,
/// `move`, `duplicate`, `close`, `count`, `exists`, `get`, `set`, `activate`, `launch`, `quit`, `run`, `reopen`) and
/// the properties `class` and `properties` are not written down here.
class Dictionary {
public:
    Dictionary(std::string applicationName, std::vector<ClassTerm> classes, std::vector<CommandTerm> commands = {},
        std::vector<std::string> enumerators = {});

    const std::string& applicationName() const noexcept { return name_; }
    const std::vector<ClassTerm>& classes() const noexcept { return classes_; }
    const std::vector<CommandTerm>& commands() const noexcept { return commands_; }
    const std::vector<std::string>& enumerators() const noexcept { return enumerators_; }

    /// Null when there is none of that number or name.
    const ClassTerm* findClass(TermId id) const noexcept;
    const ClassTerm* findClass(Symbol name) const noexcept;
    /// A property of a class or of its parents.
    const PropertyTerm* findProperty(const ClassTerm& owner, TermId id) const noexcept;
    const PropertyTerm* findProperty(const ClassTerm& owner, Symbol name) const noexcept;
    /// All properties of a class, its own first.
    std::vector<const PropertyTerm*> properties(const ClassTerm& owner) const;
    bool hasElement(const ClassTerm& owner, TermId elementClass) const noexcept;

private:
    struct Entry {
        Symbol name;
        const PropertyTerm* property;
    };

    std::string name_;
    std::vector<ClassTerm> classes_;
    std::vector<CommandTerm> commands_;
    std::vector<std::string> enumerators_;
    std::vector<std::vector<Entry>> entries_; // for each class: every name of every property, parents included
};

} // namespace mervo::applescript
