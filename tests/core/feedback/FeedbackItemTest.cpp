#include "core/feedback/FeedbackItem.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

TEST(FeedbackItem, isStoredUnderTheColumnNames)
{
    FeedbackItem item;
    item.id = "0a1b2c3d";
    item.kind = FeedbackItem::Kind::question;
    item.text = "Où ?\n\"now\"";
    item.createdAt = "2026-03-01T08:15:42Z";
    item.source = "conversation";
    EXPECT_EQ(item.encode(),
        R"({"created_at":"2026-03-01T08:15:42Z","id":"0a1b2c3d","kind":"question","source":"conversation",)"
        R"("text":"Où ?\n\"now\""})");
    EXPECT_EQ(FeedbackItem::decode(item.encode()), item);

    item.automation = "triage";
    item.channel = "mail";
    item.handle = "h";
    item.answer = "";
    item.answeredAt = "a";
    item.injectedAt = "i";
    item.expiresAt = "e";
    EXPECT_EQ(FeedbackItem::decode(item.encode()), item);
}

TEST(FeedbackItem, isNothingWhenDamaged)
{
    const std::string whole = R"({"id":"1","kind":"verdict","text":"t","created_at":"c","source":"s")";
    EXPECT_TRUE(FeedbackItem::decode(whole + "}"));
    EXPECT_TRUE(FeedbackItem::decode(whole + R"(,"answer":null,"pending_id":"x"})"));
    for (const std::string& json : {whole, whole + R"(,"answer":7})", std::string("[]"), std::string(),
             std::string(R"({"id":"1","kind":"rumour","text":"t","created_at":"c","source":"s"})"),
             std::string(R"({"id":"1","kind":"verdict","text":"t","source":"s"})"), std::string(100000, '[')})
        EXPECT_FALSE(FeedbackItem::decode(json)) << json.substr(0, 80);
}

} // namespace
} // namespace mervo
