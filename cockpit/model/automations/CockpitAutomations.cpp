#include "cockpit/model/automations/CockpitAutomations.h"

#include "cockpit/model/automations/AutomationPresentation.h"
#include "cockpit/model/automations/PromptBlocks.h"
#include "cockpit/model/shown/ShownText.h"
#include "core/foundation/FailureOf.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <utility>

namespace mervo {

namespace {

using Kind = StatusMessage::Kind;

constexpr std::chrono::milliseconds kSettling(800); ///< until a start or a stop shows in the files

bool countsAsFailed(const Automation& automation)
{
    return automation.enabled && automation.lastOutcome() == Automation::RunOutcome::failed;
}

} // namespace

CockpitAutomations::CockpitAutomations(const Needs& needs, QObject* parent)
    : QObject(parent)
    , outside_(needs)
{
}

bool CockpitAutomations::isWorking() const
{
    return starting_ > 0 || std::ranges::any_of(listed_, &Automation::running);
}

bool CockpitAutomations::hasFailed() const
{
    return std::ranges::any_of(listed_, countsAsFailed);
}

void CockpitAutomations::refresh()
{
    auto listed = outside_.automations.list();
    std::erase_if(listed, &Automation::isSystem);
    if (listed != listed_)
        listed_ = std::move(listed);
    const auto now = outside_.clock.wall();
    list_.show(listed_, now, [&, offsetAt = platform::localOffset()](const Automation& automation) {
        return AutomationPresentation::upcoming(
            automation, outside_.automations.loadedSince(automation.name), now, offsetAt);
    });
}

void CockpitAutomations::start(Operation operation, const std::string& name, std::function<void()> then)
{
    outside_.operations.work.chore(
        *this,
        [&automations = outside_.automations, operation, name] {
            return failureOf([&] { (automations.*operation)(name); });
        },
        [this, name, then = std::move(then)](const std::optional<std::string>& failure) {
            if (failure)
                outside_.operations.lastResult.show(Kind::Failed, name + " - " + *failure);
            then();
        });
}

void CockpitAutomations::run(const QString& shown)
{
    const std::string name = shown.toStdString();
    outside_.operations.lastResult.show(Kind::Started, name + " - started");
    ++starting_;
    Q_EMIT workingChanged();
    start(&AutomationOperations::runNow, name, [this] {
        QTimer::singleShot(kSettling, this, [this] {
            --starting_;
            Q_EMIT reloadRequested();
        });
    });
}

void CockpitAutomations::stop(const QString& shown)
{
    const std::string name = shown.toStdString();
    outside_.operations.lastResult.show(Kind::Stopping, name + " - stopping");
    start(&AutomationOperations::stop, name,
        [this] { QTimer::singleShot(kSettling, this, &CockpitAutomations::reloadRequested); });
}

void CockpitAutomations::pause(const QString& name)
{
    start(&AutomationOperations::pause, name.toStdString(), [this] { Q_EMIT reloadRequested(); });
}

void CockpitAutomations::resume(const QString& name)
{
    start(&AutomationOperations::resume, name.toStdString(), [this] { Q_EMIT reloadRequested(); });
}

void CockpitAutomations::remove(const QString& name)
{
    start(&AutomationOperations::remove, name.toStdString(), [this] { Q_EMIT reloadRequested(); });
}

void CockpitAutomations::openLive(const QString& shown)
{
    const std::string name = shown.toStdString();
    outside_.operations.lastResult.show(Kind::Opening, name + " - opening in Terminal");
    start(&AutomationOperations::openLive, name, [] {});
}

void CockpitAutomations::openLog(const QString& shown)
{
    const std::string name = shown.toStdString();
    const std::filesystem::path log = outside_.automations.logFile(name);
    std::error_code unreadable;
    if (!std::filesystem::exists(log, unreadable)) {
        outside_.operations.lastResult.show(Kind::Note, "no log yet for '" + name + "'");
    } else if (!outside_.workspace.openFile(log)) {
        outside_.operations.lastResult.showNotOpened(log.string());
    }
}

void CockpitAutomations::openFolder(const QString& shown)
{
    const std::string name = shown.toStdString();
    const std::filesystem::path folder = outside_.automations.folder(name);
    std::error_code unreadable;
    if (!std::filesystem::exists(folder, unreadable)) {
        outside_.operations.lastResult.show(Kind::Failed, name + " - its folder is not there");
    } else if (!outside_.workspace.revealFile(folder)) {
        outside_.operations.lastResult.showNotOpened(folder.string());
    }
}

const Automation* CockpitAutomations::automation(const QString& name) const
{
    const auto found = std::ranges::find(listed_, name.toStdString(), &Automation::name);
    return found == listed_.end() ? nullptr : &*found;
}

QVariantList CockpitAutomations::promptBlocks(const QString& name) const
{
    QVariantList list;
    const Automation* found = automation(name);
    for (const PromptBlock& block : mervo::promptBlocks(found == nullptr ? std::string_view() : found->agentPrompt())) {
        list.append(QVariantMap{{"kind", QString::fromLatin1(rawValue(block.kind))}, {"level", block.level},
            {"text", ShownText::block(block.text)}});
    }
    return list;
}

} // namespace mervo
