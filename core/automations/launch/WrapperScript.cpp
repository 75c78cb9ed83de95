#include "core/automations/launch/WrapperScript.h"

#include "core/automations/launch/AgentCommand.h"
#include "core/foundation/Text.h"
#include "platform/files.h"

#include <fmt/format.h>

namespace mervo::WrapperScript {

namespace {

namespace fs = std::filesystem;

std::string quoted(const fs::path& file)
{
    return Text::shellQuoted(file.string());
}

/// As it stands between double quotes.
std::string literal(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("\\\"$`").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string commandLine(const AgentRun& run)
{
    std::vector<std::string> words;
    for (const std::string& argument : run.arguments)
        words.push_back(Text::shellQuoted(argument));
    std::string line = Text::join(words, " ");
    const std::string placeholder = Text::shellQuoted(kPromptPlaceholder);
    const std::string cat = "cat " + quoted(run.paths.prompt());
    const auto at = line.find(placeholder);
    return at == std::string::npos ? cat + " | " + line : line.replace(at, placeholder.size(), "\"$(" + cat + ")\"");
}

} // namespace

std::string text(const AgentRun& run)
{
    const std::string done = quoted(run.paths.done()), log = quoted(run.paths.log());
    return fmt::format("#!/bin/bash\n"
                       "export PATH={}\n"
                       "export RONDEL_DONE={}\n"
                       "export RONDEL_RUN={}\n"
                       "cd {}\n"
                       "echo \"===== rondel: {} @ $(date '+%F %T') (client={}) =====\" >> {}\n"
                       "{}\n"
                       "ec=$?\n"
                       "echo \"===== rondel: {} done (exit $ec) =====\" >> {}\n"
                       "[ -f {} ] || printf '%s' \"$ec\" > {}\n",
        Text::shellQuoted(run.searchPath), done, Text::shellQuoted(run.name), Text::shellQuoted(run.cwd), run.name,
        literal(run.client), log, commandLine(run), run.name, log, done, done);
}

std::error_code write(const AgentRun& run)
{
    const fs::path file = run.paths.wrapper();
    std::error_code error = platform::replaceFile(file, text(run), platform::Keep::whileRunning);
    if (!error)
        fs::permissions(file, fs::perms(0755), error);
    std::error_code ignored;
    if (error)
        fs::remove(file, ignored);
    return error;
}

} // namespace mervo::WrapperScript
