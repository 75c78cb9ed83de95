#include "cockpit/model/CockpitModel.h"

#include "cockpit/model/queue/ActionPresentation.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Text.h"
#include "core/policy/RunningActs.h"

#include <QSysInfo>

#include <utility>

namespace mervo {

namespace {

constexpr std::chrono::seconds kTick(3);
constexpr auto kSupportAddress = "mervo@localhost"; ///< the maintainer's, as in debian/control

} // namespace

CockpitModel::CockpitModel(const Surroundings& surroundings, QObject* parent)
    : QObject(parent)
    , outside_(surroundings)
    , queue_({operations_, outside_.notifier, outside_.workspace, outside_.clock})
    , questions_(operations_)
    , automations_({operations_, outside_.automations, outside_.workspace, outside_.clock})
    , settings_({operations_, outside_.loginItem})
    , archive_({operations_, settings_, outside_.archive})
    , rules_(operations_)
{
    connectParts();
    reload();
    timer_.setTimerType(Qt::CoarseTimer);
    connect(&timer_, &QTimer::timeout, this, &CockpitModel::reload);
    timer_.start(kTick);
}

CockpitModel::~CockpitModel()
{
    timer_.stop();
    operations_.finish();
}

void CockpitModel::connectParts()
{
    connect(&queue_, &CockpitQueue::reloadRequested, this, &CockpitModel::reload);
    connect(&questions_, &CockpitQuestions::reloadRequested, this, &CockpitModel::reload);
    connect(&automations_, &CockpitAutomations::reloadRequested, this, &CockpitModel::reload);
    connect(&rules_, &CockpitRules::readingRequested, this, &CockpitModel::readDatabase);
    connect(&queue_, &CockpitQueue::waitingChanged, this, &CockpitModel::showSummary);
    connect(&questions_, &CockpitQuestions::openChanged, this, &CockpitModel::showSummary);
    connect(&automations_, &CockpitAutomations::workingChanged, this, &CockpitModel::showIcon);
    connect(&settings_, &CockpitSettings::autonomySet, this, &CockpitModel::showIcon);
    connect(&operations_.lastResult, &StatusMessage::changed, this, &CockpitModel::showIcon);
    connect(&queue_, &CockpitQueue::activationRequested, this, &CockpitModel::activationRequested);
}

void CockpitModel::reload()
{
    queue_.refresh();
    settings_.refresh();
    recordEndedActs();
    readDatabase();
    showTrouble();
    automations_.refresh();
    showSummary();
}

/// A process that was killed in the middle of an act has left its row to whoever comes next. What fails here is no
/// result of the person's doing, loses nothing, and is tried again at the next tick.
void CockpitModel::recordEndedActs()
{
    if (RunningActs::any(ConfigDir::url())) {
        operations_.stores.write(
            [](CockpitStores::Open& open) { RunningActs::recordEnded(ConfigDir::url(), open.audit); },
            [](const std::string&) {});
    }
}

void CockpitModel::readDatabase()
{
    auto reading = operations_.stores.read(databaseFailure_);
    if (databaseFailure_.empty()) {
        unreadSince_.reset();
    } else if (!unreadSince_) {
        unreadSince_ = outside_.clock.steady();
    }
    if (!reading)
        return;
    if (reading->audit && *reading->audit != audit_) {
        audit_ = std::move(*reading->audit);
        Q_EMIT auditChanged();
    }
    if (reading->rules)
        rules_.show(std::move(*reading->rules));
    questions_.show(std::move(reading->questions));
}

/// A database that is locked at one tick is no news; at the next one it is.
void CockpitModel::showTrouble()
{
    std::vector<std::string> found;
    if (queue_.failure())
        found.push_back("the queue could not be read: " + queue_.failure().message());
    if (unreadSince_ && outside_.clock.steady() - *unreadSince_ >= kTick)
        found.push_back(databaseFailure_);
    const auto kind = found.empty() ? StatusMessage::Kind::Warning : StatusMessage::Kind::Failed;
    if (!settings_.complaint().empty())
        found.push_back(settings_.complaint());
    trouble_.show(kind, Text::join(found, "\n"));
}

void CockpitModel::showSummary()
{
    const int count = static_cast<int>(queue_.waiting().size() + questions_.open().size());
    if (std::exchange(waitingCount_, count) != count)
        Q_EMIT waitingCountChanged();
    showIcon();
}

void CockpitModel::showIcon()
{
    const StatusIconState state{.autonomy = settings_.autonomyMode(),
        .attention = attention(),
        .working = queue_.isWorking() || automations_.isWorking()};
    if (state != icon_.state())
        icon_.apply(state);
}

StatusIconState::Attention CockpitModel::attention() const
{
    const auto hasFailed = [](const StatusMessage& message) { return message.kind() == StatusMessage::Kind::Failed; };
    if (!queue_.waiting().empty())
        return StatusIconState::Attention::approval;
    if (hasFailed(trouble_) || !queue_.unreadable().isEmpty() || hasFailed(operations_.lastResult)
        || automations_.hasFailed())
        return StatusIconState::Attention::error;
    return questions_.open().empty() ? StatusIconState::Attention::none : StatusIconState::Attention::proposal;
}

void CockpitModel::openSupport()
{
    const std::string version = MERVO_VERSION;
    const Args message{{"to", kSupportAddress}, {"subject", "Mervo support (" + version + ")"},
        {"body", "\n\n---\nMervo " + version + " (" + version + ")\n" + QSysInfo::prettyProductName().toStdString()}};
    if (!outside_.workspace.openUrl(ActionPresentation::mailtoUrl(message)))
        operations_.lastResult.showNotOpened("Support");
}

} // namespace mervo
