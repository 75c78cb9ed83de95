#include "core/policy/PolicyRule.h"
#include "tests/support/Growth.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

using Mismatch = PolicyRule::Mismatch;

TEST(PolicyRule, everyConditionMustHold)
{
    using Match = std::map<std::string, std::string>;
    struct Case {
        const char* what;
        std::optional<std::string> account;
        Match match;
        Args args;
        Mismatch mismatch;
        const char* argument;
    };
    const Case cases[]{
        {"nothing asked", {}, {}, {}, Mismatch::none, ""},
        {"an empty account asks nothing", "", {}, {}, Mismatch::none, ""},
        {"account in another case", "Work", {}, {{"account", "WORK"}}, Mismatch::none, ""},
        {"account as a whole", "Work", {}, {{"account", "Work2"}}, Mismatch::account, ""},
        {"no account given", "Work", {}, {}, Mismatch::account, ""},
        {"account beyond ASCII", "Élan", {}, {{"account", "éLAN"}}, Mismatch::none, ""},
        {"part in capitals inside", {}, {{"to", "acme"}}, {{"to", "x@ACME.example"}}, Mismatch::none, ""},
        {"part beyond ASCII", {}, {{"to", "müller"}}, {{"to", "HANS MU\u0308LLER"}}, Mismatch::none, ""},
        {"argument missing", {}, {{"to", "acme"}}, {{"cc", "acme"}}, Mismatch::missingArgument, "to"},
        {"argument without the part", {}, {{"to", "acme"}}, {{"to", "other"}}, Mismatch::argumentText, "to"},
        {"an empty part needs the argument", {}, {{"to", ""}}, {}, Mismatch::missingArgument, "to"},
        {"an empty part is in every text", {}, {{"to", ""}}, {{"to", ""}}, Mismatch::none, ""},
        {"one of two fails", {}, {{"a", "1"}, {"b", "2"}}, {{"a", "1"}, {"b", "x"}}, Mismatch::argumentText, "b"},
        {"account before conditions", "W", {{"to", "x"}}, {}, Mismatch::account, ""},
        {"keys keep their case", {}, {{"To", "a"}}, {{"to", "a"}}, Mismatch::missingArgument, "To"},
        {"bytes that are no UTF-8", {},
            {{"to",
                "\xFF"
                "a"}},
            {{"to",
                "x\xFF"
                "A"}},
            Mismatch::none, ""},
    };
    for (const auto& [what, account, match, args, mismatch, argument] : cases) {
        PolicyRule rule;
        rule.account = account;
        rule.match = match;
        const PolicyRule::Fit fit = rule.fit("mail.send", args);
        EXPECT_EQ(fit.mismatch, mismatch) << what;
        EXPECT_EQ(fit.argument, argument) << what;
        EXPECT_EQ(rule.matches("mail.send", args), mismatch == Mismatch::none) << what;
        rule.enabled = false;
        EXPECT_EQ(rule.fit("mail.send", args).mismatch, Mismatch::disabled) << what;
    }
}

TEST(PolicyRule, matchesAHugeArgumentInLinearTime)
{
    PolicyRule rule;
    rule.toolPattern = "*";
    rule.match["body"] = "Acme";
    const auto work = [&](std::size_t pairs) {
        EXPECT_TRUE(rule.matches("mail.send", {{"body", "É" + test::repeated(pairs, "\u0300\u0323") + " ACME"}}));
    };
    EXPECT_LT(test::growth(4'000, work), test::kLinear);
}

} // namespace
} // namespace mervo
