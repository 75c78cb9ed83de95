/// What the cockpit model asks of the engine, the login item and the archive's accounts.
#include "cockpit/model/ActionPresentation.h"
#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/PromptBlocks.h"
#include "cockpit/model/ShownText.h"

#include <QSysInfo>

#include <algorithm>
#include <exception>
#include <filesystem>

namespace mervo {

namespace {

constexpr std::chrono::milliseconds kSettling(800); ///< until a start or a stop shows in the files
constexpr auto kSupportAddress = "mervo@localhost"; ///< the maintainer's, as in debian/control
constexpr std::int64_t kImapsPort = 993;

/// The sentence of what the work throws; nothing when it returns.
template <typename Work>
std::optional<std::string> failureOf(Work&& work)
{
    try {
        work();
        return std::nullopt;
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

} // namespace

void CockpitModel::callEngine(
    const std::string& name, std::function<void(AutomationEngine&)> call, std::function<void()> then)
{
    auto& engine = outside_.engine;
    work_.chore(
        *this, [&engine, call = std::move(call)] { return failureOf([&] { call(engine); }); },
        [this, name, then = std::move(then)](const std::optional<std::string>& failure) {
            if (failure)
                setLastResult("❌ " + name + " - " + *failure);
            then();
        });
}

const Automation* CockpitModel::automation(const QString& name) const
{
    const auto found = std::ranges::find(listed_, name.toStdString(), &Automation::name);
    return found == listed_.end() ? nullptr : &*found;
}

void CockpitModel::runAutomation(const QString& shown)
{
    const std::string name = shown.toStdString();
    setLastResult("▶ " + name + " - started");
    ++busyCount_;
    refreshIcon();
    callEngine(
        name, [name](AutomationEngine& engine) { engine.runNow(name); },
        [this] {
            QTimer::singleShot(kSettling, this, [this] {
                --busyCount_;
                reload();
            });
        });
}

void CockpitModel::stopAutomation(const QString& shown)
{
    const std::string name = shown.toStdString();
    setLastResult("■ " + name + " - stopping");
    callEngine(
        name, [name](AutomationEngine& engine) { engine.stop(name); },
        [this] { QTimer::singleShot(kSettling, this, &CockpitModel::reload); });
}

void CockpitModel::openLive(const QString& shown)
{
    const std::string name = shown.toStdString();
    setLastResult("↗ " + name + " - opening in Terminal");
    callEngine(
        name, [name](AutomationEngine& engine) { engine.openLive(name); }, [] {});
}

void CockpitModel::setAutomationEnabled(const QString& shown, bool enabled)
{
    const std::string name = shown.toStdString();
    callEngine(
        name, [name, enabled](AutomationEngine& engine) { engine.setEnabled(name, enabled); }, [this] { reload(); });
}

void CockpitModel::deleteAutomation(const QString& shown)
{
    const std::string name = shown.toStdString();
    callEngine(
        name, [name](AutomationEngine& engine) { engine.remove(name); }, [this] { reload(); });
}

void CockpitModel::openLog(const QString& shown)
{
    const std::string name = shown.toStdString();
    const std::filesystem::path log = outside_.engine.logFile(name);
    std::error_code unreadable;
    if (std::filesystem::exists(log, unreadable))
        tellUnless(outside_.workspace.openFile(log), log.string());
    else
        setLastResult("no log yet for '" + name + "'");
}

QVariantList CockpitModel::promptBlocks(const QString& name) const
{
    QVariantList list;
    const Automation* found = automation(name);
    for (const PromptBlock& block : mervo::promptBlocks(found == nullptr ? std::string_view() : found->agentPrompt())) {
        list.append(QVariantMap{{"kind", QString::fromLatin1(rawValue(block.kind))}, {"level", block.level},
            {"text", ShownText::block(block.text)}});
    }
    return list;
}

void CockpitModel::setLaunchAtLogin(bool on)
{
    if (const auto failure = failureOf([&] { outside_.loginItem.setEnabled(on); }))
        setLastResult("❌ launch at login - " + *failure);
    settings_.showLaunchAtLogin(outside_.loginItem.isEnabled());
}

void CockpitModel::addIMAPAccount(const QString& mailAccountName, const QString& email, const QString& password)
{
    const IMAPArchiveAccount account{
        mailAccountName.toStdString(), email.toStdString(), MailAccounts::kGmailHost, kImapsPort};
    auto& archive = outside_.archive;
    work_.chore(
        *this,
        [&archive, address = account.email, secret = password.toStdString()] {
            return failureOf([&] { archive.storePassword(address, secret); });
        },
        [this, account](const std::optional<std::string>& failure) {
            if (failure)
                return setLastResult("❌ " + account.email + " - " + *failure);
            const bool saved = settings_.setImapAccounts([&](std::vector<IMAPArchiveAccount>& accounts) {
                std::erase_if(accounts, [&](const IMAPArchiveAccount& other) { return other.email == account.email; });
                accounts.push_back(account);
            });
            if (saved) {
                logAccount(
                    "add_imap_account", {{"email", account.email}, {"mailAccountName", account.mailAccountName}});
            }
        });
}

void CockpitModel::removeIMAPAccount(const QString& email)
{
    auto& archive = outside_.archive;
    const std::string address = email.toStdString();
    work_.chore(
        *this, [&archive, address] { return failureOf([&] { archive.removePassword(address); }); },
        [this, address](const std::optional<std::string>& failure) {
            if (failure)
                return setLastResult("❌ " + address + " - " + *failure);
            const bool saved = settings_.setImapAccounts([&](std::vector<IMAPArchiveAccount>& accounts) {
                std::erase_if(accounts, [&](const IMAPArchiveAccount& other) { return other.email == address; });
            });
            if (saved)
                logAccount("remove_imap_account", {{"email", address}});
        });
}

void CockpitModel::logAccount(const char* action, const AuditLog::Details& details)
{
    write("changing the archive's accounts", [action, details](CockpitStores::Open& open) {
        open.audit.log("cockpit", action, std::nullopt, details, "executed", "human");
    });
}

void CockpitModel::refreshGmailAccounts()
{
    auto& archive = outside_.archive;
    work_.chore(
        *this, [&archive] { return archive.gmail(); },
        [this](std::vector<GmailAccount> found) {
            if (found == gmailAccounts_)
                return;
            gmailAccounts_ = std::move(found);
            Q_EMIT gmailAccountsChanged();
        });
}

void CockpitModel::openSupport()
{
    const std::string version = MERVO_VERSION;
    const Args message{{"to", kSupportAddress}, {"subject", "Mervo support (" + version + ")"},
        {"body", "\n\n---\nMervo " + version + " (" + version + ")\n" + QSysInfo::prettyProductName().toStdString()}};
    tellUnless(outside_.workspace.openUrl(ActionPresentation::mailtoUrl(message)), "Support");
}

} // namespace mervo
