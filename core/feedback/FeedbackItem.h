#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mervo {

/// One record of the operator channel: a directive or a verdict from the owner, or a loop's question and its answer.
/// Times are texts of `Timestamps`. Identified by `id`, which is shown as "#<id>".
struct FeedbackItem {
    enum class Kind { directive, verdict, question };

    std::string id; ///< 8 characters
    Kind kind = Kind::directive;
    std::string text;
    std::optional<std::string> automation; ///< the loop it is for; absent means all
    std::optional<std::string> channel; ///< by which a question reaches the owner
    std::optional<std::string> handle; ///< the channel's own reference
    std::optional<std::string> answer;
    std::string createdAt;
    std::optional<std::string> answeredAt;
    std::optional<std::string> injectedAt; ///< when a run was told
    std::optional<std::string> expiresAt; ///< absent means never
    std::string source; ///< who made it: "conversation", "cockpit"

    bool operator==(const FeedbackItem&) const = default;

    /// To and from a JSON object with the column names ("created_at"); absent values are left out. Decoding gives
    /// nothing if a required field is missing or a field has the wrong type.
    std::string encode() const;
    static std::optional<FeedbackItem> decode(std::string_view json);
};

std::string_view rawValue(FeedbackItem::Kind kind);
std::optional<FeedbackItem::Kind> feedbackKind(std::string_view rawValue);

} // namespace mervo
