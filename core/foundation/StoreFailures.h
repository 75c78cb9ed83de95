#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

/// What the stores could not do. Stores never throw and continue with a fallback; the failure is reported all the
/// same: to the platform's log, and to the scopes that are open on the thread.
namespace mervo::StoreFailures {

/// Collects every failure on its thread during its lifetime. Scopes may be nested: each of them collects it.
///
///     StoreFailures::Scope failures;
///     stores.audit.log(...);
///     for (const std::string& sentence : failures.sentences()) ...
class Scope {
public:
    Scope() noexcept;
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    /// In the order in which they occurred, each once: "the audit row could not be written: " and the reason with
    /// its remedy. They begin with a small letter, end without a full stop and are one line for one person.
    const std::vector<std::string>& sentences() const { return sentences_; }
    /// The first of them; empty when nothing failed.
    std::string first() const { return sentences_.empty() ? std::string() : sentences_.front(); }

private:
    friend void report(std::string_view, const std::exception&) noexcept;
    void hear(const std::string& sentence);

    Scope* outer_;
    std::vector<std::string> sentences_;
};

/// Tells the log and every scope of this thread. `what` is a clause: "the audit row could not be written".
void report(std::string_view what, const std::exception& reason) noexcept;

/// The reason in words for a person; an exception's raw text only where there is nothing better.
std::string inWords(const std::exception& reason);

} // namespace mervo::StoreFailures
