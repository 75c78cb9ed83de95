#include "core/automations/engine/RondelEngine.h"
#include "core/doctor/Checks.h"
#include "core/feedback/FeedbackStore.h"
#include "core/feedback/channels/AskChannels.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Text.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <fmt/format.h>

namespace mervo::Doctor {

namespace {

constexpr std::chrono::seconds kWait(2); ///< for another program's lock
constexpr std::string_view kHarvest = "ask.harvest";

/// The home's database; none if it cannot be opened, which is another check's finding.
std::shared_ptr<MervoDB> databaseIfAny()
{
    try {
        return MervoDB::existing(kWait);
    } catch (const std::exception&) {
        return nullptr;
    }
}

bool isHarvested()
{
    return std::ranges::any_of(RondelEngine::list(), [](const Automation& automation) {
        return automation.enabled && automation.command.value_or("").find(kHarvest) != std::string::npos;
    });
}

} // namespace

Finding asking()
{
    const HarnessConfig config = HarnessConfig::load();
    const AskChannel& usual = AskChannels::channel(config.askChannel);
    const std::shared_ptr<MervoDB> database = databaseIfAny();
    FeedbackStore store(database);
    std::size_t open = 0, fetched = 0;
    for (const AskChannel* channel : AskChannels::all()) {
        const std::size_t count = database ? store.openQuestions(channel->id).size() : 0;
        open += count;
        fetched += channel->needsHarvest ? count : 0;
    }
    Finding finding;
    finding.state = State::works;
    finding.detail = fmt::format("the channel is {}; {} without an answer", usual.displayName, open);
    if (usual.needsHarvest && Text::trimmed(config.notifyEmail).empty()) {
        finding.state = State::limited;
        finding.detail += "\nthere is no address of yours to mail them to, so asking fails";
        finding.remedy = "Set your address under Settings → Notifications, or let the cockpit ask.";
    } else if (fetched > 0 && !isHarvested()) {
        finding.state = State::limited;
        finding.detail += fmt::format("\nno automation runs {}, which looks for your replies", kHarvest);
        finding.remedy = fmt::format("To look for them now: mervo run {}", kHarvest);
    }
    return finding;
}

} // namespace mervo::Doctor
