#include "core/feedback/FeedbackItem.h"

#include "core/foundation/Json.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace mervo {

namespace {

constexpr std::array kKinds{
    std::pair{FeedbackItem::Kind::directive, std::string_view("directive")},
    std::pair{FeedbackItem::Kind::verdict, std::string_view("verdict")},
    std::pair{FeedbackItem::Kind::question, std::string_view("question")},
};

/// Each field that may be absent, with its column.
constexpr std::array kOptionals{
    std::pair{"automation", &FeedbackItem::automation},
    std::pair{"channel", &FeedbackItem::channel},
    std::pair{"handle", &FeedbackItem::handle},
    std::pair{"answer", &FeedbackItem::answer},
    std::pair{"answered_at", &FeedbackItem::answeredAt},
    std::pair{"injected_at", &FeedbackItem::injectedAt},
    std::pair{"expires_at", &FeedbackItem::expiresAt},
};

constexpr std::array kTexts{
    std::pair{"id", &FeedbackItem::id},
    std::pair{"text", &FeedbackItem::text},
    std::pair{"created_at", &FeedbackItem::createdAt},
    std::pair{"source", &FeedbackItem::source},
};

} // namespace

std::string_view rawValue(FeedbackItem::Kind kind)
{
    for (const auto& [value, word] : kKinds) {
        if (value == kind)
            return word;
    }
    return {};
}

std::optional<FeedbackItem::Kind> feedbackKind(std::string_view rawValue)
{
    for (const auto& [value, word] : kKinds) {
        if (word == rawValue)
            return value;
    }
    return std::nullopt;
}

std::string FeedbackItem::encode() const
{
    nlohmann::json object{{"kind", rawValue(kind)}};
    for (const auto& [column, field] : kTexts)
        object[column] = this->*field;
    for (const auto& [column, field] : kOptionals) {
        if (this->*field)
            object[column] = *(this->*field);
    }
    return compactJson(object);
}

std::optional<FeedbackItem> FeedbackItem::decode(std::string_view json)
{
    const auto object = parsedJson<nlohmann::json>(json);
    if (!object.is_object())
        return std::nullopt;
    const auto text = [&](const char* column) -> const std::string* {
        const auto found = object.find(column);
        return found == object.end() ? nullptr : found->get_ptr<const std::string*>();
    };
    FeedbackItem item;
    const auto* kindWord = text("kind");
    const auto kind = kindWord == nullptr ? std::nullopt : feedbackKind(*kindWord);
    if (!kind)
        return std::nullopt;
    item.kind = *kind;
    for (const auto& [column, field] : kTexts) {
        if (text(column) == nullptr)
            return std::nullopt;
        item.*field = *text(column);
    }
    for (const auto& [column, field] : kOptionals) {
        if (text(column) != nullptr) {
            item.*field = *text(column);
        } else if (object.contains(column) && !object[column].is_null()) {
            return std::nullopt;
        }
    }
    return item;
}

} // namespace mervo
