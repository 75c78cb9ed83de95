#pragma once

#include "core/policy/AuditLog.h"
#include "core/policy/PendingStore.h"
#include "core/policy/RuleStore.h"
#include "tests/support/Files.h"
#include "tests/support/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace mervo::test {

/// The real `mervo` in a bundle of the test's own, whose script host gives the answer that the test wants, over a home
/// directory that does not exist at first.
class Cli : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        bundle_ = std::make_unique<TempDir>();
        std::filesystem::create_directories(contents() / "Helpers" / "platform");
        std::filesystem::copy_file(bundle() / "Helpers" / "mervo", program());
        writeProgram("osascript",
            "#!/bin/sh\n"
            "[ -z \"$SCRIPT_ERROR\" ] || { printf %s \"$SCRIPT_ERROR\" >&2; exit 1; }\n"
            "printf %s \"$SCRIPT_ANSWER\"\n");
    }
    static void TearDownTestSuite() { bundle_.reset(); }

    static std::filesystem::path contents() { return *bundle_ / "Contents"; }
    static std::filesystem::path program() { return contents() / "Helpers" / "mervo"; }
    static void writeProgram(const std::string& name, std::string_view text)
    {
        test::writeProgram(contents() / "Helpers" / "platform" / name, text);
    }

    std::filesystem::path home() const { return folder_ / "home"; }
    const TempDir& folder() const { return folder_; }

    Environment environment(Environment more = {}) const
    {
        more.insert({"MERVO_HOME", home().string()});
        more.insert({"HOME", folder_.string()});
        more.insert({"RONDEL_RUN", std::nullopt});
        return more;
    }
    Ended mervo(const std::vector<std::string>& words, const Environment& more = {}, std::string_view input = {}) const
    {
        return runProgram(program(), words, environment(more), input);
    }
    /// The program as a word of a shell's or Python's text; it stands in "$0" or argv[1].
    Ended shell(const std::string& text, const std::vector<std::string>& words = {}, const Environment& more = {}) const
    {
        std::vector<std::string> all{"-c", text, program().string()};
        all.insert(all.end(), words.begin(), words.end());
        return runProgram("/bin/bash", all, environment(more));
    }
    /// On a terminal, whose lines end in CR LF.
    Ended onTerminal(const std::vector<std::string>& words, const Environment& more = {}, int columns = 80) const
    {
        std::vector<std::string> all{"python3", "-c",
            "import os, pty, sys; sys.exit(os.waitstatus_to_exitcode(pty.spawn(sys.argv[1:])))", "/bin/sh", "-c",
            "stty cols " + std::to_string(columns) + " && exec \"$0\" \"$@\"", program().string()};
        all.insert(all.end(), words.begin(), words.end());
        return runProgram("/usr/bin/env", all, environment(more));
    }

    void setMode(std::string_view mode, int cap = 100) const
    {
        writeFile(home() / "config.json",
            "{\"autonomyMode\":\"" + std::string(mode) + "\",\"dailyMutationCap\":" + std::to_string(cap) + "}");
    }
    void addRules(const std::vector<PolicyRule>& rules) const
    {
        RuleStore store(std::make_shared<MervoDB>(home()));
        for (const PolicyRule& rule : rules)
            store.add(rule);
    }
    std::vector<AuditEntry> audit() const { return AuditLog(std::make_shared<MervoDB>(home())).recent(1000); }
    std::vector<PendingAction> pending() const { return PendingStore::listExisting(home()); }

private:
    inline static std::unique_ptr<TempDir> bundle_;
    TempDir folder_;
};

inline PolicyRule rule(std::string id, PolicyRule::Decision decision, std::string pattern,
    std::map<std::string, std::string> match = {}, std::string createdAt = "2026-01-01T00:00:00Z")
{
    PolicyRule made;
    made.id = std::move(id);
    made.decision = decision;
    made.toolPattern = std::move(pattern);
    made.match = std::move(match);
    made.createdAt = std::move(createdAt);
    return made;
}

/// A call that its tool accepts, that waits in copilote, and that no test lets run.
inline std::vector<std::string> send(std::vector<std::string> more = {})
{
    std::vector<std::string> words{"run", "mail.send", "to=ada@example.org", "subject=Hello", "body=Text"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

} // namespace mervo::test
