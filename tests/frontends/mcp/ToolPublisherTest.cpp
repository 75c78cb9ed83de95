#include "frontends/mcp/ToolPublisher.h"
#include "core/catalogue/Catalogue.h"
#include "frontends/mcp/ToolNames.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

using namespace mervo;
using namespace mervo::mcp;
using Json = nlohmann::json;

TEST(ToolPublisher, describesAToolByItsRecordAndItsEffect)
{
    Tool tool;
    tool.id = "mail.replyAll";
    tool.summary = "Reply - \"quoted\"\xE2\x89\xA5 1.";
    tool.effect = Effect::destructive;
    tool.arguments = {required("subject", "Exact subject."), optional("body", "Text."),
        optional("before", "A day.", Formats::day), optional("status", "Which.", Formats::words("unread|read")),
        optional("limit", "Lines.", Formats::scriptLimit(0)), optional("minSize", "MB.", Formats::number(1, {}, {}))};
    EXPECT_EQ(Json::parse(ToolPublisher::describe(tool, Naming::underscores)), Json::parse(R"({
        "name": "mail_replyAll", "title": "Mail: reply all", "description": "Reply - \"quoted\"≥ 1.",
        "inputSchema": {"type": "object", "required": ["subject"], "additionalProperties": false, "properties": {
            "subject": {"type": "string", "description": "Exact subject."},
            "body": {"type": "string", "description": "Text."},
            "before": {"type": "string", "description": "A day.", "format": "date"},
            "status": {"type": "string", "description": "Which.", "enum": ["unread", "read"]},
            "limit": {"type": "string", "description": "Lines.", "pattern": "^[0-9]+$"},
            "minSize": {"type": "string", "description": "MB.", "pattern": "^[0-9]*\\.?[0-9]+$"}}},
        "annotations": {"readOnlyHint": false, "destructiveHint": true, "idempotentHint": false,
            "openWorldHint": true}})"));

    tool.id = "how_it_works";
    tool.effect = Effect::read;
    tool.arguments.clear();
    const Json plain = Json::parse(ToolPublisher::describe(tool, Naming::dots));
    EXPECT_EQ(plain["title"], "How it works");
    EXPECT_EQ(
        plain["inputSchema"], Json::parse(R"({"type": "object", "properties": {}, "additionalProperties": false})"));
    EXPECT_EQ(plain["annotations"], Json::parse(R"({"readOnlyHint": true, "destructiveHint": false,
        "idempotentHint": true, "openWorldHint": false})"));

    tool.effect = Effect::create;
    EXPECT_EQ(Json::parse(ToolPublisher::describe(tool, Naming::dots))["annotations"]["destructiveHint"], false);
}

TEST(ToolNames, bothFormsOfEveryNameMeanOneTool)
{
    std::set<std::string> underscored;
    for (const Tool* tool : Tools::all()) {
        const std::string name = ToolNames::published(tool->id, Naming::underscores);
        EXPECT_TRUE(underscored.insert(name).second) << name;
        EXPECT_EQ(ToolNames::find(tool->id), tool);
        EXPECT_EQ(ToolNames::find(name), tool);
    }
    EXPECT_EQ(ToolNames::find("mail"), nullptr);
    EXPECT_EQ(ToolNames::find(""), nullptr);
}
