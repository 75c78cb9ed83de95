#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// What the owner has decided: consent.json in the desk's data folder, an object from scope to a word. A scope is the
/// bundle id of an application ("com.apple.mail"), "calendar" or "reminders"; the words are "allowed", "refused",
/// "restricted" and "write-only". No entry, or another word, is no decision.
namespace mervo::desk {

enum class Decision { undecided, allowed, refused, restricted, writeOnly };

/// The record cannot be read or written; what() is one sentence with the file and the remedy.
class ConsentError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the file afresh each time. Any thread, any number of processes.
class ConsentRecord {
public:
    explicit ConsentRecord(std::filesystem::path file);
    /// The one in the desk's data folder.
    static ConsentRecord ofDesk();

    /// Throws ConsentError for a file that is there and cannot be read or understood: it may hold a refusal.
    Decision of(const std::string& scope) const;
    /// Every scope with a decision, in the order of the file. Throws like `of`.
    std::vector<std::pair<std::string, Decision>> all() const;
    /// Records an answer, allowed or refused, unless the scope was decided in the meantime. Gives what stands in the
    /// record then. Replaces the file in one step, under a lock, with everything else in it kept. Throws ConsentError.
    Decision decide(const std::string& scope, Decision answer) const;

    const std::filesystem::path& file() const noexcept { return file_; }

private:
    std::filesystem::path file_;
};

} // namespace mervo::desk
