#include "core/feedback/channels/MailAskChannel.h"

#include "core/foundation/HarnessConfig.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/Text.h"
#include "core/policy/HarnessRunner.h"
#include "core/tools/OneLine.h"
#include "core/tools/mail/MailReplies.h"
#include "core/tools/mail/MailTools.h"
#include "platform/ascii.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo {

namespace {

constexpr std::string_view kTagStart = "[mervo#";
constexpr std::size_t kSubjectLimit = 120; ///< characters of the question
constexpr int kLooks = 10; ///< tagged messages that are looked at for one question

std::string tagOf(const FeedbackItem& question)
{
    return std::string(kTagStart) + question.id + "]";
}

std::string ownerAddress(const HarnessConfig& config)
{
    return std::string(Text::trimmed(config.notifyEmail));
}

std::string firstLine(std::string_view text)
{
    return Text::split(onOneLine(Text::trimmed(text), "\n"), '\n').front();
}

struct Place {
    std::string account, mailbox;
    bool operator==(const Place&) const = default;
};

/// A message that a search has found.
struct Hit {
    Place place;
    std::string written; ///< sender and subject in lower case; only a look at the message can part them for certain
};

/// A line of mail.search: "account/mailbox || date || size || from || subject".
std::optional<Hit> hitOf(std::string_view line)
{
    constexpr std::string_view kBetween = " || ";
    const std::string_view place = line.substr(0, line.find(kBetween));
    const std::size_t slash = place.find('/');
    for (int field = 0; field < 3; ++field) {
        const std::size_t end = line.find(kBetween);
        if (end == std::string_view::npos)
            return std::nullopt;
        line.remove_prefix(end + kBetween.size());
    }
    if (slash == std::string_view::npos || line.find(kBetween) == std::string_view::npos)
        return std::nullopt;
    return Hit{
        {std::string(place.substr(0, slash)), std::string(place.substr(slash + 1))}, platform::ascii::lowered(line)};
}

void logFailure(const char* task, const std::string& reason)
{
    platform::logError("Feedback", fmt::format("{} by mail failed: {}", task, reason));
}

/// In the order of Mail; none if the search fails.
std::vector<Hit> found(const std::string& mailbox, const std::string& part, const std::string& owner, const char* limit)
{
    const auto search = HarnessRunner::executeBuilt(Tools::mailSearch(),
        {{"account", "all"}, {"mailbox", mailbox}, {"subjectContains", part}, {"from", owner}, {"limit", limit}});
    if (!search.ok)
        logFailure("looking for questions", search.error);
    std::vector<Hit> hits;
    for (const std::string& line : Text::split(search.output, '\n')) {
        if (auto hit = hitOf(line))
            hits.push_back(*std::move(hit));
    }
    return hits;
}

void addOnce(std::vector<Place>& places, const Place& place)
{
    if (std::ranges::find(places, place) == places.end())
        places.push_back(place);
}

/// Where replies may lie, in the order of the hits.
std::vector<Place> placesOfReplies(const std::string& tag, const std::vector<Hit>& hits)
{
    std::vector<Place> places;
    int looks = 0;
    for (const Hit& hit : hits) {
        const std::size_t at = hit.written.find(tag);
        if (at == std::string::npos)
            continue;
        if (++looks > kLooks)
            break;
        if (hit.written.find("re:") < at)
            addOnce(places, hit.place);
    }
    return places;
}

std::string replyTo(const std::string& tag, const std::vector<Hit>& hits, const std::string& owner)
{
    for (const Place& place : placesOfReplies(tag, hits)) {
        std::string text = MailReplies::newest(place.account, place.mailbox, tag, owner);
        if (!text.empty())
            return text;
    }
    return {};
}

} // namespace

std::optional<std::string> MailAskChannel::deliver(const FeedbackItem& question) const
{
    const std::string tag = tagOf(question);
    const std::string line = firstLine(question.text);
    const auto sent = HarnessRunner::executeBuilt(Tools::mailNotify(),
        {{"subject", tag + " " + std::string(Text::firstCharacters(line, kSubjectLimit))},
            {"body", question.text + "\n\n- Reply to this mail to answer (keep " + tag + " in the subject)."}});
    if (!sent.ok)
        throw ServiceError("mail.notify failed: " + sent.error);
    return tag;
}

std::vector<AskChannel::Reply> MailAskChannel::harvest(const std::vector<FeedbackItem>& open) const
{
    const std::string owner = ownerAddress(HarnessConfig::load());
    if (owner.empty() || open.empty())
        return {};
    const std::string part = open.size() == 1 ? tagOf(open.front()) : std::string(kTagStart);
    const std::vector<Hit> hits = found("all", part, owner, "0");
    std::vector<Reply> replies;
    for (const FeedbackItem& question : open) {
        if (std::string text = replyTo(tagOf(question), hits, owner); !text.empty())
            replies.push_back({question.id, std::move(text)});
    }
    return replies;
}

void MailAskChannel::cleanup(const FeedbackItem& question) const
{
    const HarnessConfig config = HarnessConfig::load();
    const std::string owner = ownerAddress(config), tag = tagOf(question);
    if (config.askCleanup == "off" || owner.empty())
        return;
    const Tool& tool = config.askCleanup == "delete" ? Tools::mailDelete() : Tools::mailArchive();
    std::vector<Place> places;
    for (const Hit& hit : found("INBOX", tag, owner, "20"))
        addOnce(places, hit.place);
    for (const auto& [account, mailbox] : places) {
        const auto tidied = HarnessRunner::executeBuilt(
            tool, {{"account", account}, {"mailbox", mailbox}, {"subjectContains", tag}, {"from", owner}});
        if (!tidied.ok)
            logFailure("tidying up behind a question", tidied.error);
    }
}

} // namespace mervo
