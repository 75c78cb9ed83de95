#include "cockpit/model/settings/CockpitSettings.h"

#include "core/feedback/channels/AskChannels.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/FailureOf.h"
#include "core/foundation/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

namespace mervo {

namespace {

constexpr std::chrono::seconds kPatience(2); ///< the main thread waits
constexpr std::array<std::string_view, 3> kCleanups{"archive", "delete", "off"}; // the first is the default

std::string cleanupOf(const QString& word)
{
    const std::string text = word.toStdString();
    return std::ranges::find(kCleanups, text) == kCleanups.end() ? std::string(kCleanups.front()) : text;
}

std::optional<std::string> orNotSet(std::string text)
{
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::string trimmed(const QString& text)
{
    const std::string whole = text.toStdString();
    return std::string(Text::trimmed(whole));
}

QString shown(const std::optional<std::string>& text)
{
    return QString::fromStdString(text.value_or(""));
}

} // namespace

CockpitSettings::CockpitSettings(const Needs& needs, QObject* parent)
    : QObject(parent)
    , outside_(needs)
    , mirror_(HarnessConfig::load())
    , launchAtLogin_(needs.loginItem.isEnabled())
{
}

QString CockpitSettings::autonomyWord() const
{
    const auto word = rawValue(mirror_.autonomyMode);
    return QString::fromLatin1(word.data(), static_cast<qsizetype>(word.size()));
}

QString CockpitSettings::rondelHome() const
{
    return shown(mirror_.rondelHome);
}

QString CockpitSettings::terminalApp() const
{
    return shown(mirror_.terminalApp);
}

QString CockpitSettings::notifyEmail() const
{
    return shown(mirror_.notifyEmail);
}

QString CockpitSettings::notifyIMessageHandle() const
{
    return shown(mirror_.notifyIMessageHandle);
}

QString CockpitSettings::askChannel() const
{
    return shown(mirror_.askChannel);
}

QString CockpitSettings::askCleanup() const
{
    return shown(mirror_.askCleanup);
}

void CockpitSettings::setTerminalApp(const QString& application)
{
    store(
        [&](HarnessConfig& config) { mirror_.terminalApp = config.terminalApp = orNotSet(application.toStdString()); });
}

void CockpitSettings::setNotifyEmail(const QString& address)
{
    store([&](HarnessConfig& config) { mirror_.notifyEmail = config.notifyEmail = trimmed(address); });
}

void CockpitSettings::setNotifyIMessageHandle(const QString& handle)
{
    store([&](HarnessConfig& config) {
        mirror_.notifyIMessageHandle = config.notifyIMessageHandle = orNotSet(trimmed(handle));
    });
}

void CockpitSettings::setAskChannel(const QString& channel)
{
    const std::string_view id = AskChannels::channel(channel.toStdString()).id;
    store([&](HarnessConfig& config) { mirror_.askChannel = config.askChannel = id; });
}

void CockpitSettings::setAskCleanup(const QString& cleanup)
{
    store([&](HarnessConfig& config) { mirror_.askCleanup = config.askCleanup = cleanupOf(cleanup); });
}

void CockpitSettings::setAutonomy(const QString& word)
{
    const auto mode = mervo::autonomyMode(word.toStdString());
    if (!mode || !store([&](HarnessConfig& config) { mirror_.autonomyMode = config.autonomyMode = *mode; }))
        return;
    Q_EMIT autonomyModeChanged();
    Q_EMIT autonomySet();
    outside_.operations.write("changing the level", [mode = std::string(rawValue(*mode))](CockpitStores::Open& open) {
        open.logHuman("set_autonomy", {{"mode", mode}}, "human_toggle");
    });
}

void CockpitSettings::setLaunchAtLogin(bool on)
{
    if (const auto failure = failureOf([&] { outside_.loginItem.setEnabled(on); }))
        outside_.operations.lastResult.show(StatusMessage::Kind::Failed, "launch at login - " + *failure);
    showLaunchAtLogin();
}

bool CockpitSettings::setImapAccounts(const std::function<void(std::vector<IMAPArchiveAccount>&)>& change)
{
    const bool saved = store([&](HarnessConfig& config) {
        change(config.imapAccounts);
        mirror_.imapAccounts = config.imapAccounts;
    });
    if (saved)
        Q_EMIT imapAccountsChanged();
    return saved;
}

/// The change sets its field in the file's content and in the mirror.
bool CockpitSettings::store(const std::function<void(HarnessConfig&)>& change)
{
    const HarnessConfig before = mirror_;
    const auto update = HarnessConfig::update(change, kPatience);
    if (!update.failure.empty()) {
        mirror_ = before;
        outside_.operations.lastResult.show(StatusMessage::Kind::Failed, update.failure);
        return false;
    }
    if (!update.notice.empty())
        outside_.operations.lastResult.show(StatusMessage::Kind::Warning, update.notice);
    if (mirror_ != before)
        Q_EMIT changed();
    return true;
}

void CockpitSettings::showLaunchAtLogin()
{
    const bool on = outside_.loginItem.isEnabled();
    if (std::exchange(launchAtLogin_, on) != on)
        Q_EMIT changed();
}

void CockpitSettings::refresh()
{
    HarnessConfig now = HarnessConfig::load();
    if (std::exchange(mirror_.autonomyMode, now.autonomyMode) != now.autonomyMode)
        Q_EMIT autonomyModeChanged();
    if (std::exchange(mirror_.imapAccounts, now.imapAccounts) != now.imapAccounts)
        Q_EMIT imapAccountsChanged();
    const auto stamp = platform::fileStamp(ConfigDir::url() / "config.json");
    if (stamp && stamp == complainedOf_)
        return;
    complainedOf_ = stamp && stamp->isSettled() ? stamp : std::nullopt;
    complaint_ = HarnessConfig::complaint();
}

} // namespace mervo
