#include "core/automations/launch/AgentCommand.h"
#include "core/automations/launch/DoneSignal.h"
#include "core/automations/launch/WrapperScript.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

using Words = std::vector<std::string>;

TEST(Launch, givesEachClientItsArguments)
{
    const AgentWork work{.client = "", .model = "opus", .cwd = "/w d", .timeout = std::chrono::hours(12)};
    const auto with = [&](const char* client, auto change) {
        AgentWork changed = work;
        changed.client = client;
        change(changed);
        Words words = agentCommand(changed);
        if (words.size() > 2 && words.end()[-2] == "--append-system-prompt") {
            EXPECT_TRUE(words.back().starts_with("OPERATIONAL CONTEXT (rondel): you are running as a scheduled, "));
            EXPECT_TRUE(words.back().ends_with("Do not kill any process and do not close the window yourself."));
            words.back() = "context";
        }
        return words;
    };
    const auto plain = [](AgentWork&) {};
    const auto model = [](const char* name) { return [name](AgentWork& changed) { changed.model = name; }; };
    const char *all = "--dangerously-skip-permissions", *context = "--append-system-prompt";
    const Words usual{"claude", "--model", "opus", "--permission-mode", "auto", context, "context"};
    EXPECT_EQ(with("claude", plain), usual);
    EXPECT_EQ(with("unheard-of", plain), usual);
    EXPECT_EQ(with("claude", model("x-haiku-4")), (Words{"claude", "--model", "x-haiku-4", all, context, "context"}));
    EXPECT_EQ(
        with("claude", model("")), (Words{"claude", "--model", "", "--permission-mode", "auto", context, "context"}));
    EXPECT_EQ(with("claude", [](AgentWork& changed) { changed.dangerous = true, changed.effort = "max"; }),
        (Words{"claude", "--model", "opus", all, "--effort", "max", context, "context"}));
    const Words codex{"codex", "exec", "--dangerously-bypass-approvals-and-sandbox", "-C", "/w d"};
    for (const auto& [name, more] : std::vector<std::pair<const char*, Words>>{{"gpt-5", {"--model", "gpt-5", "-"}},
             {"", {"-"}}, {"claude-3", {"-"}}, {"claude", {"--model", "claude", "-"}}}) {
        Words expected = codex;
        expected.insert(expected.end(), more.begin(), more.end());
        EXPECT_EQ(with("codex", model(name)), expected) << name;
    }
    EXPECT_EQ(with("agy", plain), (Words{"agy", "--print", all, "--print-timeout", "43200s", "--model", "opus"}));
    EXPECT_EQ(with("grok", model("")),
        (Words{"grok", "@@RONDEL_PROMPT@@", "--no-alt-screen", "--always-approve", "--cwd", "/w d"}));
}

TEST(Launch, writesTheWrapperToTheByte)
{
    AgentRun run{.name = "a.b",
        .client = "claude",
        .arguments = {"claude", "it's"},
        .cwd = "/w d",
        .home = "/h'm",
        .searchPath = "/b:/c"};
    const auto script = [](const std::string& client, const std::string& line) {
        return R"(#!/bin/bash
export PATH='/b:/c'
export RONDEL_DONE='/h'\''m/.runtime/run/a.b.done'
export RONDEL_RUN='a.b'
cd '/w d'
echo "===== rondel: a.b @ $(date '+%F %T') (client=)"
            + client + R"() =====" >> '/h'\''m/.runtime/logs/a.b.log'
)" + line + R"(
ec=$?
echo "===== rondel: a.b done (exit $ec) =====" >> '/h'\''m/.runtime/logs/a.b.log'
[ -f '/h'\''m/.runtime/run/a.b.done' ] || printf '%s' "$ec" > '/h'\''m/.runtime/run/a.b.done'
)";
    };
    EXPECT_EQ(
        WrapperScript::text(run), script("claude", R"(cat '/h'\''m/.runtime/run/a.b.prompt' | 'claude' 'it'\''s')"));
    run.arguments = {"grok", std::string(kPromptPlaceholder), "-x"};
    run.client = "a\"$(b)`\\";
    EXPECT_EQ(WrapperScript::text(run),
        script("a\\\"\\$(b)\\`\\\\", R"line('grok' "$(cat '/h'\''m/.runtime/run/a.b.prompt')" '-x')line"));
}

TEST(Launch, readsTheDigitsOfADoneSignal)
{
    for (const auto& [text, code] :
        std::vector<std::pair<const char*, int>>{{"0", 0}, {"1\n", 1}, {"143", 143}, {"", 1}, {"done", 1}, {" 0 \n", 0},
            {"exit 1, 2", 12}, {"-5", 5}, {"2147483647", 2147483647}, {"2147483648", 1}, {"\xff\x30", 0}})
        EXPECT_EQ(DoneSignal::code(text), code) << text;
}

} // namespace
} // namespace mervo
