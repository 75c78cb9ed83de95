#include "platform/desk/consent/Consent.h"

#include "platform/desk/consent/OwnerQuestion.h"
#include "platform/files.h"
#include "platform/lock.h"
#include "platform/stop.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fmt/format.h>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::chrono::milliseconds kPause{200}; // between two looks at another process's question

constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kNames{
    {{"com.apple.mail", "Mail"}, {"com.apple.iCal", "Calendar"}, {"com.apple.reminders", "Reminders"},
        {"com.apple.AddressBook", "Contacts"}, {"com.apple.Notes", "Notes"}, {"com.apple.MobileSMS", "Messages"},
        {"com.apple.finder", "Finder"}, {"com.apple.systemevents", "System Events"}, {"com.apple.Terminal", "Terminal"},
        {"com.googlecode.iterm2", "iTerm2"}, {"calendar", "Calendars"}, {"reminders", "Reminders"}}};

std::string nobodyToAsk(const std::string& scope)
{
    return fmt::format("Nobody could be asked whether Mervo may use {}; run \"mervo bootstrap-permissions\" where you "
                       "can answer, in your desktop or at the terminal at which you logged in.",
        scopeName(scope));
}

} // namespace

std::string scopeName(const std::string& scope)
{
    const auto* found =
        std::ranges::find(kNames, std::string_view(scope), [](const auto& entry) { return entry.first; });
    return found == kNames.end() ? scope : std::string(found->second);
}

Consent::Consent(ConsentRecord record, Mode whenUndecided, Question question)
    : record_(std::move(record))
    , mode_(std::move(whenUndecided))
    , question_(std::move(question))
{
}

Consent Consent::ofDesk(Sections sections)
{
    return {ConsentRecord::ofDesk(), [sections] { return whenUndecided(Configuration::load(sections)); }, askOwner};
}

Consent::Standing Consent::standing(const std::string& scope) const
{
    try {
        return {record_.of(scope), {}};
    } catch (const std::exception& error) {
        return {Decision::refused, error.what()};
    }
}

Consent::Verdict Consent::use(const std::string& scope) const
{
    const Standing found = standing(scope);
    if (found.decision != Decision::undecided)
        return {found.decision == Decision::allowed, found.trouble};
    return mode_() == WhenUndecided::allow ? Verdict{true, {}} : ask(scope);
}

Consent::Standing Consent::settle(const std::string& scope) const
{
    const Standing found = standing(scope);
    if (found.decision != Decision::undecided)
        return found;
    if (mode_() == WhenUndecided::allow) {
        record(scope, Decision::allowed);
    } else {
        ask(scope);
    }
    return standing(scope);
}

/// Puts the question and records the answer, one process at a time. What another one has recorded meanwhile is the
/// answer here too.
Consent::Verdict Consent::ask(const std::string& scope) const
{
    const auto turn = std::filesystem::path(record_.file()).replace_extension("question.lock");
    static_cast<void>(platform::createPrivateFolder(turn.parent_path()));
    while (platform::Stop::reason() == nullptr) {
        std::error_code why;
        const auto held = platform::FileLock::acquire(turn, std::chrono::milliseconds(0), why);
        if (const Standing now = standing(scope); now.decision != Decision::undecided)
            return {now.decision == Decision::allowed, now.trouble};
        // Where no lock can be had, two questions at once are better than none.
        if (held || why != std::errc::timed_out)
            return verdictOf(scope, question_(scope));
        std::this_thread::sleep_for(kPause);
    }
    return {false, nobodyToAsk(scope)};
}

Consent::Verdict Consent::verdictOf(const std::string& scope, Answer answer) const
{
    if (answer == Answer::nobody)
        return {false, nobodyToAsk(scope)};
    return {record(scope, answer == Answer::allow ? Decision::allowed : Decision::refused) == Decision::allowed, {}};
}

/// What stands in the record then; an answer that cannot be recorded holds for this use alone.
Decision Consent::record(const std::string& scope, Decision answer) const
{
    try {
        return record_.decide(scope, answer);
    } catch (const std::exception& error) {
        platform::logError("Consent", error.what());
        return answer;
    }
}

} // namespace mervo::desk
