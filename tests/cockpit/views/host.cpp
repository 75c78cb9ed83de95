/// The cockpit's views over the real model and the stores of $MERVO_HOME, in a plain window and with a desktop that
/// only says what it was asked for, a line on standard output each:
///
///     cockpit-views-host [--dark] [--automations]

#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/automations/ListOnlyAutomations.h"
#include "cockpit/views/Views.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QStyleHints>

#include <fmt/core.h>

#include <cstdio>

namespace {

void say(const std::string& line)
{
    fmt::print("{}\n", line);
    std::fflush(stdout);
}

struct Silence final : mervo::platform::Notifier {
    void post(const mervo::platform::Notification&) override { }
    void remove(const std::string&) override { }
};

struct Desktop final : mervo::platform::Workspace {
    bool openFile(const std::filesystem::path& file) override { return said("file " + file.string()); }
    bool openUrl(const std::string& url) override { return said("url " + url); }
    bool revealFile(const std::filesystem::path& file) override { return said("reveal " + file.string()); }
    void setBadge(const std::string&) override { }

    static bool said(const std::string& line)
    {
        say(line);
        return true;
    }
};

struct NoLogin final : mervo::platform::LoginItem {
    bool isEnabled() const override { return false; }
    void setEnabled(bool) override { }
};

struct NoArchive final : mervo::ArchiveAccounts {
    void storePassword(const std::string&, const std::string&) override { }
    void removePassword(const std::string&) override { }
    std::vector<mervo::GmailAccount> gmail() override { return {}; }
};

class Window final : public QQuickView {
    Q_OBJECT

public:
    Window(mervo::CockpitModel& model, const QStringList& words)
    {
        mervo::Views::prepare(*engine());
        setResizeMode(SizeRootObjectToView);
        setInitialProperties({{"model", QVariant::fromValue(&model)}, {"dark", words.contains("--dark")},
            {"isAnimated", words.contains("--animated")},
            {"tab", words.contains("--automations") ? "automations" : "approvals"}});
        setSource(QUrl(mervo::Views::rootUrl));
        if (rootObject() == nullptr)
            return;
        resize(QSizeF(rootObject()->implicitWidth(), rootObject()->implicitHeight()).toSize());
        connect(rootObject(), SIGNAL(closeRequested()), SLOT(closeRequested()));
        connect(rootObject(), SIGNAL(settingsRequested(QString)), SLOT(settingsRequested(QString)));
        connect(rootObject(), SIGNAL(quitRequested()), QGuiApplication::instance(), SLOT(quit()));
    }

private Q_SLOTS:
    void closeRequested() { say("close"); }
    void settingsRequested(const QString& section) { say("settings " + section.toStdString()); }
};

} // namespace

int main(int count, char** words)
{
    QGuiApplication application(count, words);
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    Silence notifier;
    Desktop workspace;
    NoLogin loginItem;
    NoArchive archive;
    mervo::ListOnlyAutomations automations;
    mervo::CockpitModel model({notifier, workspace, loginItem, automations, archive});
    Window window(model, QGuiApplication::arguments());
    if (window.rootObject() == nullptr)
        return 1;
    window.show();
    window.requestActivate();
    return QGuiApplication::exec();
}

#include "host.moc"
