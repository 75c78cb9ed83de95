#include "frontends/cli/Command.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::cli {

Arguments parse(const Command& command, std::span<const std::string> words)
{
    Arguments arguments;
    bool optionsEnded = false;
    for (const std::string& word : words) {
        if (optionsEnded || !word.starts_with('-') || word == "-") {
            arguments.words.push_back(word);
        } else if (word == "--") {
            optionsEnded = true;
        } else if (std::ranges::find(command.options, word, &Option::name) != command.options.end()) {
            arguments.options.insert(word);
        } else {
            throw UsageError(fmt::format("\"{}\" is no option of \"mervo {}\"", word, command.name));
        }
    }
    if (arguments.words.size() > command.wordLimit) {
        throw UsageError(fmt::format(
            "\"{}\" is one word too many for \"mervo {}\"", arguments.words[command.wordLimit], command.name));
    }
    return arguments;
}

std::string usageLine(const Command& command)
{
    return fmt::format("usage: mervo {}{}{}\n", command.name, command.usage.empty() ? "" : " ", command.usage);
}

} // namespace mervo::cli
