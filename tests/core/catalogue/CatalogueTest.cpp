#include "core/catalogue/Catalogue.h"
#include "tests/support/Files.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <sstream>

namespace mervo {
namespace {

TEST(Catalogue, holdsTheToolsInTheOrderOfPublication)
{
    std::ostringstream list;
    for (const Tool* tool : Tools::all())
        list << tool->id << ' ' << rawValue(tool->effect) << '\n';
    EXPECT_EQ(list.str(), test::readFile(MERVO_SOURCE_DIR "/tests/core/catalogue/catalogue.txt"));
}

TEST(Catalogue, findsByTheExactIdAlone)
{
    for (const Tool* tool : Tools::all())
        EXPECT_EQ(Tools::find(tool->id), tool);
    for (const auto* id : {"", "Mail.search", "mail.Search", "mail.search ", "mail", "mail_search", "nothing"})
        EXPECT_EQ(Tools::find(id), nullptr) << id;
    EXPECT_NE(Tools::find("ask"), nullptr);
    EXPECT_NE(Tools::find("how_it_works"), nullptr);
}

TEST(Catalogue, suggestsWhatAMistypedIdMayHaveMeant)
{
    const struct {
        const char* typed;
        const char* first;
    } cases[] = {{"mail.serach", "mail.search"}, {"MAIL_SEARCH", "mail.search"}, {"search", "mail.search"},
        {"reminder.deletelist", "reminder.deleteList"}, {"howitworks", "how_it_works"},
        {"imessages.read", "imessage.read"}, {"mail.message", "mail.messageId"}, {"mail.read", "mail.body"},
        {"mail.show", "mail.body"}, {"mail.list", "mail.search"}, {"mail.create", "mail.draft"},
        {"cal.list", "cal.find"}, {"calendar.create", "cal.add"}, {"events.delete", "cal.delete"},
        {"contact.search", "contact.find"}, {"note.create", "note.add"}, {"reminder.get", "reminder.find"}};
    for (const auto& [typed, first] : cases) {
        const auto near = Tools::closest(typed);
        ASSERT_FALSE(near.empty()) << typed;
        EXPECT_EQ(near.front(), first) << typed;
        EXPECT_LE(near.size(), 3U);
    }
    for (const auto* reading : {"mail.read", "mail.get", "mail.show", "mail.view", "mail.list", "imessage.list"}) {
        for (const std::string& id : Tools::closest(reading))
            EXPECT_EQ(Tools::find(id)->effect, Effect::read) << reading << ": " << id;
    }
    EXPECT_TRUE(Tools::closest("").empty());
    EXPECT_TRUE(Tools::closest("zzzzqqqq").empty());
    EXPECT_TRUE(Tools::closest(std::string(100000, 'm')).empty());
}

/// What a tool says to arguments, nothing where it takes them.
std::string refusal(const Tool& tool, const Args& args)
{
    try {
        (void)tool.build(args);
        return {};
    } catch (const ToolError& error) {
        return error.what();
    }
}

// Every argument that is marked as required really is: a call with all others is refused and told its name. No other
// one is, as long as the call has one of those that stand for each other.
TEST(Catalogue, marksAsRequiredWhatEveryCallMustHave)
{
    const std::map<std::string_view, std::string> shaped{
        {"name", "Mail"}, {"at", "08:30"}, {"hours", "8"}, {"every", "5"}, {"client", "codex"}};
    const test::TempDir home;
    setenv("MERVO_HOME", home.string().c_str(), 1);
    test::writeFile(home / "automations/Mail/loop.json", R"({"name":"Mail","kind":"script"})");
    for (const Tool* tool : Tools::all()) {
        if (tool->id == "mail.notify" || tool->id == "imessage.notify")
            continue; // these ask the configuration first
        Args whole;
        for (const auto& argument : tool->arguments) {
            whole[std::string(argument.name)] = shaped.contains(argument.name) ? shaped.at(argument.name) : "7";
            EXPECT_EQ(argument.help.find('\n'), std::string_view::npos) << tool->id << " " << argument.name;
        }
        EXPECT_EQ(whole.size(), tool->arguments.size()) << tool->id << " names an argument twice";
        if (tool->id == "auto.edit")
            whole.erase("prompt"); // it would be another kind of work
        EXPECT_NO_THROW(tool->build(whole)) << tool->id;
        for (const auto& argument : tool->arguments) {
            Args args = whole;
            args.erase(std::string(argument.name));
            const std::string missing = tool->id.starts_with("auto.")
                ? "no automation named '' (see auto.list)"
                : "missing required argument: " + std::string(argument.name);
            EXPECT_EQ(refusal(*tool, args), argument.required ? missing : "")
                << tool->id << " without " << argument.name;
        }
    }
}

TEST(Catalogue, hasAnEmptyHarvestCycleKeptOutOfTheTrail)
{
    for (const Tool* tool : Tools::all())
        EXPECT_EQ(tool->auditAutoRun != nullptr, tool->id == "ask.harvest") << tool->id;
    const Tool& harvest = *Tools::find("ask.harvest");
    EXPECT_FALSE(harvest.auditAutoRun("✅ 0 reply(ies) harvested"));
    EXPECT_TRUE(harvest.auditAutoRun("✅ 10 reply(ies) harvested"));
}

} // namespace
} // namespace mervo
