#pragma once

#include "platform/applescript/values/Dictionary.h"
#include "platform/applescript/values/Object.h"
#include "platform/applescript/values/ScriptError.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mervo::applescript {

/// Where a new or moved object goes.
struct Insertion {
    enum class Where { into, beginning, end, before, after };

    Where where = Where::into;
    Ref<Object> anchor; // the container; for before and after the object beside which it goes
    TermId elementClass = kNoTerm; // `end of to recipients`: the elements meant, where they were named
};

/// `make new CLASS at PLACE with properties {...}`. Without a place, `place` is into the target of the `tell`.
struct MakeRequest {
    const ClassTerm* newClass = nullptr;
    Insertion place;
    bool hasPlace = false;
    std::vector<std::pair<TermId, Value>> properties; // names that the class has, in the order written
    Value data; // `with data`

    /// Null when the property was not given.
    const Value* property(TermId id) const noexcept;
};

enum class Saving { unspecified, yes, no, ask };

/// A command of the application's own dictionary.
///
/// Object references among the arguments have been looked up: one object is Value::object, `every x` is a list of
/// objects. A boolean given as `with LABEL` is true.
struct CommandCall {
    TermId command = kNoTerm;
    Value direct; // none when it was left out
    Ref<Object> target; // the object of the innermost `tell`
    std::vector<std::pair<TermId, Value>> arguments;

    /// Null when the argument was not given.
    const Value* argument(TermId parameter) const noexcept;
    /// Whether a boolean argument was given and is true. -1700 when it is no boolean.
    bool isOn(TermId parameter) const;
};

/// An application as scripts see it: a dictionary, a tree of objects, and what its commands do.
///
/// Created by the registry on first use. The constructor must not touch files or databases, since `application "X" is
/// running` creates it too. The interpreter calls `launch` once, before the first object or command is used.
/// Everything may throw ScriptError.
class Application {
public:
    Application() = default;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    virtual ~Application() = default;

    virtual const Dictionary& dictionary() const = 0;
    /// The `application` object; its class is CommonTerm::applicationClass. `name`, `version`, `running` and
    /// `frontmost` are answered below and need not stand in the dictionary.
    virtual Ref<Object> root() = 0;

    virtual std::string version() const { return "1.0"; }
    virtual bool isRunning() const = 0;
    virtual bool isFrontmost() const { return false; }
    /// Starts the application where it does not run: -600 when it cannot, -1743 when the user has refused access.
    virtual void launch() = 0;
    virtual void activate() { launch(); }
    virtual void quit(Saving saving) = 0;

    /// Runs `change`, in which one command of a script sets a property of several objects in turn. An application that
    /// saves may do so once for all of them, and then throws when that fails.
    virtual void together(const std::function<void()>& change) { change(); }

    // The commands of all applications. The defaults throw -1708. `every x` as argument comes object by object.
    virtual Value make(const MakeRequest& request);
    virtual void remove(Object& object);
    virtual Value move(Object& object, const Insertion& place);
    virtual Value duplicate(Object& object, const std::optional<Insertion>& place);
    virtual void close(Object& object, Saving saving);
    /// The commands of the dictionary.
    virtual Value perform(const CommandCall& call);

    /// The script has ended without an error; an application that is late with something does it now. For each that
    /// the script has used.
    virtual void finish() { }

    /// When the current command must be done, if `with timeout` limits it. A command that waits or takes long should
    /// check this and throw ScriptError(ErrorNumber::timedOut).
    std::optional<std::chrono::steady_clock::time_point> deadline() const noexcept { return deadline_; }
    void setDeadline(std::optional<std::chrono::steady_clock::time_point> end) noexcept { deadline_ = end; }

private:
    std::optional<std::chrono::steady_clock::time_point> deadline_;
};

/// The applications that scripts can address. For one that a script does not name, neither the dictionary nor the
/// application is created.
class ApplicationRegistry {
public:
    using Factory = std::function<std::unique_ptr<Application>()>;
    using DictionarySource = std::function<const Dictionary&()>;

    /// `names`: the name that scripts show first, then other names; names and bundle id ignore case. The dictionary
    /// must live as long as the registry (a function-local static is the usual way).
    void add(std::vector<std::string> names, std::string bundleId, DictionarySource dictionary, Factory factory);

    struct Entry {
        std::vector<std::string> names;
        std::string bundleId;
        DictionarySource dictionary;
        Factory factory;
        std::unique_ptr<Application> instance;
        bool isLaunched = false;
        bool isAuthorized = false;
    };

    /// Asked before the first command that a script sends to an application, and never for "is running". Throws
    /// ScriptError where the application may not be used; -1743 without words gets the usual ones. It may wait for the
    /// user, which counts for no `with timeout`.
    using Guard = std::function<void(const Entry& entry)>;
    void setGuard(Guard guard) { guard_ = std::move(guard); }
    /// Asks the guard, once for each application.
    void authorize(Entry& entry);

    /// Null when no such application is registered.
    Entry* findByName(std::string_view name);
    Entry* findByBundleId(std::string_view bundleId);
    /// Tells those that were launched that the script has ended.
    void finish();
    /// Created on first use; not launched.
    static Application& instance(Entry& entry);

private:
    std::vector<std::unique_ptr<Entry>> entries_;
    Guard guard_;
};

} // namespace mervo::applescript
