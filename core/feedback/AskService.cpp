#include "core/feedback/AskService.h"

#include "core/feedback/channels/AskChannels.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Text.h"
#include "core/foundation/Timestamps.h"
#include "core/tools/OneLine.h"
#include "platform/ascii.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fmt/format.h>

namespace mervo {

namespace {

constexpr std::size_t kQuoteLimit = 80; ///< characters of a question where it is only to be recognised
constexpr std::int64_t kFeedLimit = 50; ///< records of a summary
constexpr std::int64_t kRetainDays = 30;

constexpr std::string_view kBlockHead = "=== DECISIONS / ANSWERS FROM YOUR OPERATOR ===\n"
                                        "Honor these instructions. To ask the operator a question: "
                                        "`mervo run ask text=\"...\"`.\n";
constexpr std::string_view kBlockEnd = "\n=============================================";

std::optional<std::string> after(Timestamps::Time time, std::optional<std::int64_t> hours)
{
    constexpr std::int64_t kMost = 24 * 365 * 200; // as good as never, and within what the clock can count
    if (!hours)
        return std::nullopt;
    return Timestamps::string(time + std::chrono::hours(std::clamp(*hours, -kMost, kMost)));
}

std::optional<std::string> unlessEmpty(const std::optional<std::string>& text)
{
    return text && !text->empty() ? text : std::nullopt;
}

FeedbackItem newItem(FeedbackItem::Kind kind, const std::string& text, const std::optional<std::string>& automation,
    std::optional<std::int64_t> expiresHours, const std::string& source)
{
    const auto now = std::chrono::system_clock::now();
    FeedbackItem item;
    item.id = platform::ascii::lowered(Text::newShortId());
    item.kind = kind;
    item.text = text;
    item.automation = unlessEmpty(automation);
    item.createdAt = Timestamps::string(now);
    item.expiresAt = after(now, expiresHours);
    item.source = source;
    return item;
}

/// No text that is shown can begin a line of its own, and so pass for another record.
std::string asLine(const std::string& text)
{
    return onOneLine(text, " ");
}

std::string quoted(const std::string& question)
{
    return fmt::format("\"{}\"", Text::firstCharacters(asLine(question), kQuoteLimit));
}

std::string renderLine(const FeedbackItem& item)
{
    if (item.kind != FeedbackItem::Kind::question)
        return fmt::format("• [{}] {}", rawValue(item.kind), asLine(item.text));
    return fmt::format(
        "• [answer] #{} {} → {}", item.id, quoted(item.text), asLine(item.answer.value_or("(no answer)")));
}

std::string feedLine(const FeedbackItem& item)
{
    if (item.kind != FeedbackItem::Kind::question || item.answer)
        return renderLine(item);
    return fmt::format("#{} [pending · {}] {}", item.id, item.channel.value_or("?"), quoted(item.text));
}

std::string lines(const std::vector<FeedbackItem>& items, std::string (*line)(const FeedbackItem&))
{
    std::vector<std::string> all;
    std::ranges::transform(items, std::back_inserter(all), line);
    return Text::join(all, "\n");
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

std::optional<std::string> AskService::runningAutomation()
{
    const char* const name = std::getenv("RONDEL_RUN");
    return unlessEmpty(name == nullptr ? std::nullopt : std::optional<std::string>(name));
}

std::string AskService::ask(const std::string& text, const std::optional<std::string>& channel,
    const std::optional<std::string>& automation, std::optional<std::int64_t> expiresHours, const std::string& source)
{
    const auto named = unlessEmpty(channel);
    const AskChannel& by = AskChannels::channel(named ? *named : HarnessConfig::load().askChannel);
    const auto loop = unlessEmpty(automation);
    FeedbackItem item =
        newItem(FeedbackItem::Kind::question, text, loop ? loop : runningAutomation(), expiresHours, source);
    item.channel = by.id;
    item.handle = by.deliver(item);
    store_.add(item);
    return fmt::format("question #{} asked via {}{} - the answer will come back on the next run", item.id,
        by.displayName, item.automation ? fmt::format(" for '{}'", *item.automation) : std::string());
}

std::string AskService::directive(const std::string& text, const std::optional<std::string>& automation,
    std::optional<std::int64_t> expiresHours, const std::string& source) noexcept
{
    const FeedbackItem item = newItem(FeedbackItem::Kind::directive, text, automation, expiresHours, source);
    store_.add(item);
    return fmt::format("directive recorded (#{})", item.id);
}

void AskService::recordVerdict(const std::string& text, const std::optional<std::string>& automation,
    std::optional<std::int64_t> expiresHours) noexcept
{
    store_.add(newItem(FeedbackItem::Kind::verdict, text, automation, expiresHours, "cockpit"));
}

bool AskService::answer(const std::string& id, const std::string& text) noexcept
{
    return store_.answer(id, text);
}

void AskService::remove(const std::string& id) noexcept
{
    store_.remove(id);
}

std::int64_t AskService::harvestAll() noexcept
{
    const Database::OneWait wait;
    std::int64_t answered = 0;
    for (const AskChannel* channel : AskChannels::all()) {
        const auto open = channel->needsHarvest ? store_.openQuestions(channel->id) : std::vector<FeedbackItem>();
        if (open.empty())
            continue;
        for (const AskChannel::Reply& reply : channel->harvest(open)) {
            if (!store_.answer(reply.id, reply.answer))
                continue;
            ++answered;
            channel->cleanup(*std::ranges::find(open, reply.id, &FeedbackItem::id));
        }
    }
    store_.gc(kRetainDays);
    return answered;
}

AskService::Injection AskService::injectionBlock(const std::string& automation) noexcept
{
    const Database::OneWait wait;
    const std::vector<FeedbackItem> items = store_.pendingInjection(automation);
    if (items.empty())
        return {};
    Injection injection{fmt::format("{}{}{}", kBlockHead, lines(items, renderLine), kBlockEnd), {}};
    for (const FeedbackItem& item : items) {
        if (item.kind == FeedbackItem::Kind::question)
            injection.answers.push_back(item.id);
    }
    return injection;
}

void AskService::markInjected(const Injection& injection) noexcept
{
    if (injection.answers.empty())
        return;
    const Database::OneWait wait;
    store_.markInjected(injection.answers);
}

std::string AskService::summary(const std::optional<std::string>& automation) noexcept
{
    const std::vector<FeedbackItem> items = store_.recent(unlessEmpty(automation), kFeedLimit);
    return items.empty() ? "(no operator feedback pending)" : lines(items, feedLine);
}

} // namespace mervo
