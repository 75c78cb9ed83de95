#include "frontends/cli/Call.h"

#include "core/automations/model/RunLock.h"
#include "core/catalogue/Catalogue.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Nearest.h"
#include "core/policy/ActorName.h"
#include "platform/unicode.h"

#include <cstdlib>
#include <fmt/format.h>
#include <span>

namespace mervo::cli {

namespace {

constexpr std::string_view kBody = "body";
constexpr std::string_view kBodyFile = "body-file";

void add(Args& args, std::string_view word)
{
    const auto split = word.find('=');
    if (split == std::string_view::npos)
        throw UsageError(fmt::format("\"{}\" is no key=value word", word));
    const std::string_view key = word.substr(0, split);
    const std::string_view value = word.substr(split + 1);
    if (key.empty())
        throw UsageError(fmt::format("\"{}\" names no argument before \"=\"", word));
    if (!platform::isValidUtf8(key))
        throw UsageError(fmt::format("the argument name \"{}\" is not valid UTF-8", key));
    if (!platform::isValidUtf8(value))
        throw UsageError(fmt::format("the value of {} is not valid UTF-8", key));
    if (!args.emplace(key, value).second)
        throw UsageError(fmt::format("{} is given twice", key));
}

/// Turns body-file into body. Last of all, so that nothing is read for a call that is wrong in another way.
void takeBodyFile(Args& args, Io& io)
{
    const auto file = args.find(kBodyFile);
    if (file == args.end())
        return;
    if (args.contains(kBody))
        throw UsageError("body and body-file are given both; give one");
    const std::string path = file->second;
    args.erase(file);
    args.emplace(kBody, path == "-" ? io.input() : readText(path));
}

} // namespace

const Tool& findTool(const std::string& id)
{
    if (const Tool* tool = Tools::find(id))
        return *tool;
    throw UsageError(fmt::format("there is no tool \"{}\"{}", id, didYouMean(Tools::closest(id))));
}

Call readCall(const Arguments& arguments, Io& io)
{
    if (arguments.words.empty())
        throw UsageError("no tool was named; \"mervo tools\" lists them");
    Call call{&findTool(arguments.words.front()), {}};
    for (const std::string& word : std::span(arguments.words).subspan(1))
        add(call.args, word);
    takeBodyFile(call.args, io);
    return call;
}

std::string actor()
{
    const char* const automation = std::getenv("RONDEL_RUN"); // set for agents: the automation's name
    if (automation != nullptr && *automation != '\0')
        return actorName("auto", automation);
    const auto run = RunLock::runAbove(ConfigDir::url());
    return run ? actorName("auto", *run) : "cli";
}

} // namespace mervo::cli
