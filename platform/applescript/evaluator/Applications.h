#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/applescript/values/Limits.h"

#include <chrono>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace mervo::applescript {

/// Gives an error its standard words where it has none, and the application's name in front.
void explain(ScriptError& error, Application& application, const std::string& specifier = {});
[[noreturn]] void failIn(Application& application, ScriptError error, const std::string& specifier = {});

/// The applications of one running script: finds and starts them, and puts every question to them.
class Applications {
public:
    explicit Applications(ApplicationRegistry& registry)
        : registry_(registry)
    {
    }
    Applications(const Applications&) = delete;
    Applications& operator=(const Applications&) = delete;
    ~Applications() = default;

    std::optional<double> timeout; // seconds for each question, inside `with timeout`

    using Entry = ApplicationRegistry::Entry;
    /// Null when there is no such application.
    Entry* withName(std::string_view name) const { return registry_.findByName(name); }
    Entry* withBundleId(std::string_view id) const { return registry_.findByBundleId(id); }
    /// The entry of a value that names an application; -1728 when there is none.
    Entry& entryOf(const Value& application) const;
    /// The application, once it is known that it may be used; every command passes here.
    Application& authorized(Entry& entry);
    /// The application, started: any command sent to an application first starts it.
    Application& launched(Entry& entry);
    /// The application that a dictionary belongs to, started; -1728 when there is none.
    Application& launchedOf(const Dictionary& dictionary);
    Ref<Object> rootOf(const Value& application) { return launched(entryOf(application)).root(); }

    /// Runs a question to an application, with the time that `with timeout` gives it. What goes wrong is explained in
    /// the application's name; `specifier` is asked only then.
    template <typename Question, typename Specifier>
    auto ask(Application& application, Question&& question, Specifier&& specifier);
    template <typename Question>
    auto ask(Application& application, Question&& question)
    {
        return ask(application, std::forward<Question>(question), [] { return std::string(); });
    }

private:
    void begin(Application& application);
    void end() const;

    ApplicationRegistry& registry_;
    std::optional<std::chrono::steady_clock::time_point> deadline_;
};

template <typename Question, typename Specifier>
auto Applications::ask(Application& application, Question&& question, Specifier&& specifier)
{
    Limits::glance();
    try {
        begin(application);
        if constexpr (std::is_void_v<decltype(question())>) {
            question();
            end();
        } else {
            auto answer = question();
            end();
            return answer;
        }
    } catch (ScriptError& error) {
        explain(error, application, error.message.empty() ? specifier() : std::string());
        throw;
    } catch (const std::bad_alloc&) {
        throw ScriptError::outOfMemory();
    } catch (const std::exception&) {
        ScriptError error(ErrorNumber::handlerFailed);
        explain(error, application);
        throw error;
    }
}

} // namespace mervo::applescript
