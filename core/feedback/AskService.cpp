#include "core/feedback/AskService.h"

#include "core/foundation/Text.h"
#include "core/foundation/Timestamps.h"
#include "platform/ascii.h"

#include <algorithm>
#include <chrono>

namespace mervo {

namespace {

/// 8 lower-case hexadecimal digits.
std::string newItemId()
{
    return platform::ascii::lowered(Text::newShortId());
}

std::optional<std::string> after(Timestamps::Time time, std::optional<std::int64_t> hours)
{
    constexpr std::int64_t kMost = 24 * 365 * 200; // as good as never, and within what the clock can count
    if (!hours)
        return std::nullopt;
    return Timestamps::string(time + std::chrono::hours(std::clamp(*hours, -kMost, kMost)));
}

} // namespace

AskService::AskService(FeedbackStore& store) noexcept
    : store_(store)
{
}

AskService& AskService::shared() noexcept
{
    static AskService service(FeedbackStore::shared());
    return service;
}

void AskService::recordVerdict(const std::string& text, const std::optional<std::string>& automation,
    std::optional<std::int64_t> expiresHours) noexcept
{
    const auto now = std::chrono::system_clock::now();
    FeedbackItem item;
    item.id = newItemId();
    item.kind = FeedbackItem::Kind::verdict;
    item.text = text;
    item.automation = automation;
    item.createdAt = Timestamps::string(now);
    item.expiresAt = after(now, expiresHours);
    item.source = "cockpit";
    store_.add(item);
}

} // namespace mervo
