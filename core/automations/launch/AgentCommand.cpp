#include "core/automations/launch/AgentCommand.h"

#include <initializer_list>

namespace mervo {

namespace {

using Words = std::vector<std::string>;

constexpr const char* kOperationalContext = "OPERATIONAL CONTEXT (rondel): you are running as a scheduled, "
                                            "unsupervised session. When your task is done, signal "
                                            "it with the `mervo auto-done` command - the rondel supervisor will close "
                                            "the session from the outside. Do not kill "
                                            "any process and do not close the window yourself.";

void add(Words& words, std::initializer_list<std::string> more)
{
    words.insert(words.end(), more);
}

Words codex(const AgentWork& work)
{
    Words words{"codex", "exec", "--dangerously-bypass-approvals-and-sandbox", "-C", work.cwd};
    if (!work.model.empty() && !work.model.starts_with("claude-"))
        add(words, {"--model", work.model});
    add(words, {"-"});
    return words;
}

Words agy(const AgentWork& work)
{
    Words words{"agy", "--print", "--dangerously-skip-permissions", "--print-timeout",
        std::to_string(work.timeout.count()) + "s"};
    if (!work.model.empty())
        add(words, {"--model", work.model});
    return words;
}

Words grok(const AgentWork& work)
{
    Words words{"grok", std::string(kPromptPlaceholder), "--no-alt-screen", "--always-approve", "--cwd", work.cwd};
    if (!work.model.empty())
        add(words, {"--model", work.model});
    return words;
}

/// The smallest models have no mode in which they judge permissions themselves.
Words claude(const AgentWork& work)
{
    Words words{"claude", "--model", work.model};
    if (work.dangerous || work.model.find("haiku") != std::string::npos) {
        add(words, {"--dangerously-skip-permissions"});
    } else {
        add(words, {"--permission-mode", "auto"});
    }
    if (work.effort)
        add(words, {"--effort", *work.effort});
    add(words, {"--append-system-prompt", kOperationalContext});
    return words;
}

} // namespace

Words agentCommand(const AgentWork& work)
{
    if (work.client == "codex")
        return codex(work);
    if (work.client == "agy")
        return agy(work);
    if (work.client == "grok")
        return grok(work);
    return claude(work);
}

} // namespace mervo
