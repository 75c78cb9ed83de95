#pragma once

#include "frontends/cli/Io.h"

#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A command is one value; its help, its completion and the parsing of its words are made from it.
namespace mervo::cli {

enum class ExitCode { done = 0, failed = 1, usage = 2 };

/// The words of the command line make no sense: nothing has been run, nothing written. what() is one sentence.
class UsageError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A switch; none takes a value.
struct Option {
    std::string_view name; ///< "--json"
    std::string_view help;
};

inline constexpr Option kJson{"--json", "print JSON instead of text"};

/// What stood behind the command's name: switches, and all other words as they stand.
///
/// A word is a switch when it begins with "-", is longer than that, and stands before a word "--", which ends the
/// switches. Every other word reaches the command untouched: nothing is split, expanded or abbreviated, because a word
/// can hold a person's text.
struct Arguments {
    std::set<std::string, std::less<>> options;
    std::vector<std::string> words;

    bool has(const Option& option) const { return options.contains(option.name); }
};

struct Command {
    std::string_view name;
    std::string_view usage; ///< the words behind the name: "<tool> [key=value ...] [--json]"
    std::string_view summary; ///< one line of the list of commands
    std::string_view help; ///< the rest of its page: what it promises, and examples
    std::span<const Option> options;
    std::size_t wordLimit; ///< more words than this are a usage error
    ExitCode (*run)(const Arguments&, Io&);
};

inline constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

/// Sorts the words of a command. Throws UsageError for a switch or a number of words that it does not know.
Arguments parse(const Command& command, std::span<const std::string> words);

/// "usage: mervo run <tool> ..." with a line feed.
std::string usageLine(const Command& command);

} // namespace mervo::cli
