#pragma once

#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/automations/EngineAutomations.h"
#include "core/automations/engine/EngineError.h"
#include "core/foundation/MervoDB.h"
#include "core/foundation/Timestamps.h"
#include "tests/support/Files.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <atomic>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

/// A home with real stores, a desktop that remembers what it was asked for, and a clock moved by hand.
namespace mervo::test {

struct FakeNotifier final : platform::Notifier {
    void post(const platform::Notification& notification) override { posted.push_back(notification); }
    void remove(const std::string& id) override { removed.push_back(id); }
    std::vector<platform::Notification> posted;
    std::vector<std::string> removed;
};

struct FakeWorkspace final : platform::Workspace {
    bool openFile(const std::filesystem::path& file) override { return opened.push_back(file), opens; }
    bool openUrl(const std::string& url) override { return opened.push_back(url), opens; }
    bool revealFile(const std::filesystem::path&) override { return true; }
    void setBadge(const std::string& label) override { badges.push_back(label); }
    std::vector<std::string> opened, badges;
    bool opens = true;
};

struct FakeLoginItem final : platform::LoginItem {
    bool isEnabled() const override { return on; }
    void setEnabled(bool enabled) override
    {
        if (refuses)
            throw std::runtime_error("the folder is read-only");
        on = enabled;
    }
    bool on = false, refuses = false;
};

/// Lists what is on disk, does nothing else, and refuses where it is told to.
struct FakeAutomations final : AutomationOperations {
    std::vector<Automation> list() override { return real.list(); }
    std::filesystem::path folder(const std::string& name) override { return real.folder(name); }
    std::filesystem::path logFile(const std::string& name) override { return real.logFile(name); }
    std::optional<platform::Moment> loadedSince(const std::string& name) override { return real.loadedSince(name); }
    void runNow(const std::string& name) override { note("run " + name); }
    void stop(const std::string& name) override { note("stop " + name); }
    void pause(const std::string& name) override { note("pause " + name); }
    void resume(const std::string& name) override { note("resume " + name); }
    void remove(const std::string& name) override { note("remove " + name); }
    void openLive(const std::string& name) override { note("live " + name); }

    void note(const std::string& deed)
    {
        const std::scoped_lock guard(mutex);
        deeds.push_back(deed);
        if (refuses)
            throw EngineError::failed("no terminal");
    }
    EngineAutomations real;
    std::mutex mutex;
    std::vector<std::string> deeds;
    std::atomic<bool> refuses = false;
};

struct FakeArchive final : ArchiveAccounts {
    void storePassword(const std::string& email, const platform::Secret& password) override
    {
        if (refuses)
            throw std::runtime_error("the keyring is locked");
        passwords[email] = password.view();
    }
    void removePassword(const std::string& email) override { passwords.erase(email); }
    std::vector<GmailAccount> gmail() override { return {{"Home", "me@mail.example", "imap"}}; }
    std::map<std::string, std::string> passwords;
    bool refuses = false;
};

/// The one Qt application of the test program.
inline void ensureApplication()
{
    static int count = 1;
    static char name[] = "test";
    static char* words[] = {name, nullptr};
    static QCoreApplication application(count, words);
}

class World : public testing::Test {
protected:
    World()
    {
        ensureApplication();
        ::setenv("MERVO_HOME", home.string().c_str(), 1);
        db = std::make_shared<MervoDB>(home.path());
    }
    ~World() override
    {
        std::filesystem::remove(home / "hold");
        model.reset(); // before the home goes
        ::unsetenv("MERVO_HOME");
    }

    void start() { model.emplace(surroundings()); }

    Surroundings surroundings()
    {
        return {
            notifier, workspace, loginItem, automations, archive, {[this] { return wall; }, [this] { return steady; }}};
    }

    /// Runs the event loop until something holds; false after 20 s.
    template <typename Holds>
    bool until(Holds&& holds)
    {
        QElapsedTimer waited;
        for (waited.start(); waited.elapsed() < 20'000;) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            if (holds())
                return true;
            ::usleep(1000);
        }
        return false;
    }
    bool untilResult(const std::string& text)
    {
        const bool came = until([&] { return result() == text; });
        if (!came)
            ADD_FAILURE() << "the last result is " << result();
        return came;
    }
    std::string result() { return model->lastResult()->line().toStdString(); }

    /// An action whose tool runs the stand-in of the script host.
    static PendingAction draft(const std::string& id, const std::string& subject = "Hi")
    {
        return {id, "mail.draft", {{"subject", subject}, {"to", "a@example.org"}},
            "mail.draft subject=" + subject + " to=a@example.org", "2026-03-01T08:15:42Z", std::nullopt};
    }
    PendingAction queue(const PendingAction& action) const
    {
        PendingStore().save(action);
        return action;
    }
    bool isQueued(const std::string& id) const { return std::filesystem::exists(home / ("pending/" + id + ".json")); }

    QString key(int row = 0) { return role(*model->queue()->list(), row, ApprovalListModel::KeyRole).toString(); }
    static QVariant role(const QAbstractItemModel& rows, int row, int role) { return rows.index(row, 0).data(role); }

    /// The subjects with which tools ran.
    std::vector<std::string> ran() const
    {
        std::vector<std::string> lines;
        std::ifstream file(home / "ran");
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

    /// "actor|action|outcome|reason|key=value...", newest first.
    std::vector<std::string> rows() const
    {
        AuditLog audit(db);
        std::vector<std::string> list;
        for (const AuditEntry& row : audit.recent(100)) {
            list.push_back(row.actor + "|" + row.action + "|" + row.outcome + "|" + row.reason.value_or("-"));
            for (const auto& [name, value] : row.details)
                list.back() += "|" + name + "=" + value;
        }
        return list;
    }

    // What others do to the home, over connections of their own.
    void ask(const std::string& id, const std::string& text) const
    {
        FeedbackItem item;
        item.id = id;
        item.kind = FeedbackItem::Kind::question;
        item.text = text;
        item.automation = "morning";
        item.channel = "cockpit";
        item.createdAt = "2026-03-01T08:00:00Z";
        FeedbackStore(std::make_shared<MervoDB>(home.path())).add(item);
    }
    void addRule(const std::string& id) const
    {
        PolicyRule rule;
        rule.id = id;
        rule.createdAt = "2026-03-01T08:00:00Z";
        RuleStore(std::make_shared<MervoDB>(home.path())).add(rule);
    }
    static void lower()
    {
        HarnessConfig::update([](HarnessConfig& config) { config.autonomyMode = AutonomyMode::panic; });
    }
    void loop(const std::string& name, const std::string& more = {}) const
    {
        test::writeFile(home / ("automations/" + name + "/loop.json"), "{\"name\":\"" + name + "\"" + more + "}");
    }
    void state(const std::string& name, const std::string& json) const
    {
        test::writeFile(home / (".runtime/state/" + name + ".json"), json);
    }

    TempDir home;
    std::shared_ptr<MervoDB> db;
    FakeNotifier notifier;
    FakeWorkspace workspace;
    FakeLoginItem loginItem;
    FakeAutomations automations;
    FakeArchive archive;
    std::chrono::system_clock::time_point wall = *Timestamps::date("2026-03-01T08:20:42Z");
    std::chrono::steady_clock::time_point steady{std::chrono::hours(5)};
    std::optional<CockpitModel> model;
};

} // namespace mervo::test
