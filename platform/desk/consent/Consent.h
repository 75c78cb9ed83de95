#pragma once

#include "platform/desk/consent/ConsentRecord.h"
#include "platform/desk/consent/ConsentSettings.h"

#include <functional>
#include <string>

namespace mervo::desk {

/// What the owner calls the thing that a scope names: "Mail", "Calendars"; a bundle id that is not known as it is.
std::string scopeName(const std::string& scope);

/// What came of a question to the owner. nobody: nobody could be asked, or the question ended without an answer.
enum class Answer { allow, refuse, nobody };

/// Whether what is used here may be used: the record, and the owner where nothing is recorded. Every use of an
/// application or of the calendars and reminders passes through `use` once.
///
/// A record that is damaged refuses every use, since it may hold a refusal. Blocks while the owner is asked; of several
/// processes with a question one asks at a time. Nothing here throws but what the caller's functions throw.
class Consent {
public:
    using Mode = std::function<WhenUndecided()>;
    /// Puts the question for a scope to the owner and waits.
    using Question = std::function<Answer(const std::string& scope)>;

    Consent(ConsentRecord record, Mode whenUndecided, Question question);
    /// That of this desk. desk.toml is read only where nothing is decided; `sections` are all that it may have. What is
    /// wrong with it is thrown then (ConfigurationError).
    static Consent ofDesk(Sections sections);

    /// A scope as it stands. `trouble`: why it cannot be said; the decision is then `refused`.
    struct Standing {
        Decision decision = Decision::refused;
        std::string trouble = {};
    };
    /// Without a question.
    Standing standing(const std::string& scope) const;

    struct Verdict {
        bool isAllowed = false;
        /// Why it is not, as a sentence with the remedy; empty where the owner has decided so.
        std::string why = {};
    };
    /// May this use go on? Where nothing is decided: in the mode `allow` it may, and nothing is recorded; in the mode
    /// `ask` the owner is asked and the answer recorded; with nobody to ask it may not.
    /// "write-only" allows no use, since every use reads.
    Verdict use(const std::string& scope) const;

    /// Settles a scope before its first use: in the mode `allow` what is undecided is recorded as allowed, in the mode
    /// `ask` the owner is asked. What was decided stays. Gives what stands afterwards.
    Standing settle(const std::string& scope) const;

private:
    Verdict ask(const std::string& scope) const;
    Verdict verdictOf(const std::string& scope, Answer answer) const;
    Decision record(const std::string& scope, Decision answer) const;

    ConsentRecord record_;
    Mode mode_;
    Question question_;
};

} // namespace mervo::desk
