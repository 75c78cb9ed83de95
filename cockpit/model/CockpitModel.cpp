#include "cockpit/model/CockpitModel.h"

#include "cockpit/model/ShownText.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Text.h"
#include "core/policy/RunningActs.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace mervo {

namespace {

constexpr std::chrono::seconds kTick(3);
constexpr std::string_view kFailed = "❌";

std::vector<std::string> idsOf(const std::vector<PendingAction>& actions)
{
    std::vector<std::string> ids;
    std::ranges::transform(actions, std::back_inserter(ids), &PendingAction::id);
    return ids;
}

bool countsAsFailed(const Automation& automation)
{
    return automation.enabled && automation.lastOutcome() == Automation::RunOutcome::failed;
}

StatusIconState::Autonomy autonomyOf(AutonomyMode mode)
{
    switch (mode) {
    case AutonomyMode::panic:
        return StatusIconState::Autonomy::panic;
    case AutonomyMode::yolo:
        return StatusIconState::Autonomy::yolo;
    case AutonomyMode::copilote:
        break;
    }
    return StatusIconState::Autonomy::copilote;
}

/// Takes a text over for the views; true when it is another one.
bool show(QString& shown, const std::string& text)
{
    QString now = ShownText::block(Text::trimmed(text), ShownText::kArgumentLimit);
    return std::exchange(shown, now) != now;
}

} // namespace

CockpitModel::CockpitModel(const Surroundings& surroundings, QObject* parent)
    : QObject(parent)
    , outside_(surroundings)
    , queue_(PendingStore().dir())
{
    connect(&settings_, &CockpitSettings::autonomyModeChanged, this, &CockpitModel::autonomyModeChanged);
    connect(&settings_, &CockpitSettings::notSaved, this,
        [this](const QString& why) { setLastResult("❌ " + why.toStdString()); });
    connect(&settings_, &CockpitSettings::noticed, this,
        [this](const QString& notice) { setLastResult("⚠ " + notice.toStdString()); });
    settings_.showLaunchAtLogin(outside_.loginItem.isEnabled());
    outside_.notifier.onResponse = [this](const auto& action, const auto& context) { respond(action, context); };
    refresh(true);
    timer_.setTimerType(Qt::CoarseTimer);
    connect(&timer_, &QTimer::timeout, this, &CockpitModel::reload);
    timer_.start(kTick);
}

CockpitModel::~CockpitModel()
{
    outside_.notifier.onResponse = nullptr;
    timer_.stop();
    work_.finish();
}

QString CockpitModel::autonomyMode() const
{
    const auto word = rawValue(settings_.autonomyMode());
    return QString::fromLatin1(word.data(), static_cast<qsizetype>(word.size()));
}

void CockpitModel::reload()
{
    refresh(false);
}

void CockpitModel::refresh(bool initial)
{
    std::vector<PendingAction> fresh;
    if (queue_.refresh()) {
        std::ranges::copy_if(queue_.actions(), std::back_inserter(fresh),
            [this](const PendingAction& action) { return !knownIds_.contains(action.id); });
        const auto ids = idsOf(queue_.actions());
        knownIds_ = {ids.begin(), ids.end()};
        showQueue();
    } else {
        approvals_.showAges(outside_.clock.wall());
    }
    settings_.refresh();
    recordEndedActs();
    readDatabase();
    showTrouble();
    readAutomations();
    updateCounts();
    refreshIcon();
    if (!initial && !fresh.empty())
        notify(fresh, pending_.size());
}

void CockpitModel::showQueue()
{
    pending_.clear();
    std::ranges::copy_if(queue_.actions(), std::back_inserter(pending_),
        [this](const PendingAction& action) { return !deciding_.contains(action.id); });
    approvals_.show(pending_, outside_.clock.wall());
    withdrawDecided();
}

/// A process that was killed in the middle of an act has left its row to whoever comes next. What fails here is no
/// result of the person's doing, loses nothing, and is tried again at the next tick.
void CockpitModel::recordEndedActs()
{
    if (RunningActs::any(ConfigDir::url())) {
        stores_.write([](CockpitStores::Open& open) { RunningActs::recordEnded(ConfigDir::url(), open.audit); },
            [](const std::string&) {});
    }
}

void CockpitModel::readDatabase()
{
    auto reading = stores_.read(databaseFailure_);
    if (databaseFailure_.empty())
        unreadSince_.reset();
    else if (!unreadSince_)
        unreadSince_ = outside_.clock.steady();
    if (!reading)
        return;
    if (reading->audit && *reading->audit != audit_) {
        audit_ = std::move(*reading->audit);
        Q_EMIT auditChanged();
    }
    if (reading->rules && *reading->rules != rules_) {
        rules_ = std::move(*reading->rules);
        Q_EMIT rulesChanged();
    }
    std::erase_if(reading->questions, [this](const FeedbackItem& item) { return answering_.contains(item.id); });
    if (reading->questions != openQuestions_) {
        openQuestions_ = std::move(reading->questions);
        questions_.show(openQuestions_);
    }
}

/// A database that is locked at one tick is no news; at the next one it is.
void CockpitModel::showTrouble()
{
    std::vector<std::string> found;
    if (queue_.failure())
        found.push_back("the queue could not be read: " + queue_.failure().message());
    if (unreadSince_ && outside_.clock.steady() - *unreadSince_ >= kTick)
        found.push_back(databaseFailure_);
    isBlind_ = !found.empty();
    if (!settings_.complaint().empty())
        found.push_back(settings_.complaint());
    const std::string said = Text::join(found, "\n");
    if (show(trouble_, said.empty() ? said : (isBlind_ ? "❌ " : "⚠ ") + said))
        Q_EMIT troubleChanged();
    const std::size_t files = queue_.damaged();
    const std::string text = std::to_string(files) + " waiting file" + (files == 1 ? "" : "s");
    if (show(unreadable_, files == 0 ? "" : text + " cannot be read; run mervo doctor"))
        Q_EMIT unreadableChanged();
}

void CockpitModel::readAutomations()
{
    auto listed = outside_.engine.list();
    std::erase_if(listed, &Automation::isSystem);
    if (listed != listed_)
        listed_ = std::move(listed);
    automations_.show(listed_, outside_.clock.wall());
}

void CockpitModel::updateCounts()
{
    const int count = static_cast<int>(pending_.size() + openQuestions_.size());
    if (std::exchange(waitingCount_, count) != count)
        Q_EMIT waitingCountChanged();
    if (std::exchange(badge_, pending_.size()) != pending_.size())
        outside_.workspace.setBadge(pending_.empty() ? std::string() : std::to_string(pending_.size()));
}

void CockpitModel::refreshIcon()
{
    const bool isRunning = std::ranges::any_of(listed_, &Automation::running);
    const StatusIconState state{autonomyOf(settings_.autonomyMode()), attention(), busyCount_ > 0 || isRunning};
    if (state != icon_.state())
        icon_.apply(state);
}

StatusIconState::Attention CockpitModel::attention() const
{
    if (!pending_.empty())
        return StatusIconState::Attention::approval;
    const bool isBlind = isBlind_ || !unreadable_.isEmpty();
    if (isBlind || lastResult_.toStdString().starts_with(kFailed) || std::ranges::any_of(listed_, countsAsFailed))
        return StatusIconState::Attention::error;
    return openQuestions_.empty() ? StatusIconState::Attention::none : StatusIconState::Attention::proposal;
}

void CockpitModel::tellUnless(bool isOpened, const std::string& what)
{
    if (!isOpened)
        setLastResult("❌ " + what + " - this desktop has no program that opens it");
}

void CockpitModel::setLastResult(const std::string& text)
{
    if (!show(lastResult_, text))
        return;
    Q_EMIT lastResultChanged();
    refreshIcon();
}

} // namespace mervo
