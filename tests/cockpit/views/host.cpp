/// The cockpit's views over the real model and the stores of $MERVO_HOME, in a plain window and without a desktop.
/// Prints "close" when the views ask to be closed.

#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/automations/EngineAutomations.h"
#include "cockpit/views/Views.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QStyleHints>

#include <cstdio>

namespace {

/// A desktop that does nothing.
struct Nothing final : mervo::platform::Notifier,
                       mervo::platform::Workspace,
                       mervo::platform::LoginItem,
                       mervo::ArchiveAccounts {
    void post(const mervo::platform::Notification&) override { }
    void remove(const std::string&) override { }
    bool openFile(const std::filesystem::path&) override { return true; }
    bool openUrl(const std::string&) override { return true; }
    bool revealFile(const std::filesystem::path&) override { return true; }
    void setBadge(const std::string&) override { }
    bool isEnabled() const override { return false; }
    void setEnabled(bool) override { }
    void storePassword(const std::string&, const mervo::platform::Secret&) override { }
    void removePassword(const std::string&) override { }
    std::vector<mervo::GmailAccount> gmail() override { return {}; }
};

class Window final : public QQuickView {
    Q_OBJECT

public:
    explicit Window(mervo::CockpitModel& model)
    {
        mervo::Views::prepare(*engine());
        setResizeMode(SizeRootObjectToView);
        setInitialProperties({{"model", QVariant::fromValue(&model)}, {"isAnimated", false}});
        setSource(QUrl(mervo::Views::rootUrl));
        if (rootObject() == nullptr)
            return;
        resize(QSizeF(rootObject()->implicitWidth(), rootObject()->implicitHeight()).toSize());
        connect(rootObject(), SIGNAL(closeRequested()), SLOT(closeRequested()));
        connect(rootObject(), SIGNAL(quitRequested()), QGuiApplication::instance(), SLOT(quit()));
    }

private Q_SLOTS:
    void closeRequested()
    {
        std::puts("close");
        std::fflush(stdout);
    }
};

} // namespace

int main(int count, char** words)
{
    QGuiApplication application(count, words);
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    Nothing desktop;
    mervo::EngineAutomations automations;
    mervo::CockpitModel model({desktop, desktop, desktop, automations, desktop});
    Window window(model);
    if (window.rootObject() == nullptr)
        return 1;
    window.show();
    window.requestActivate();
    return QGuiApplication::exec();
}

#include "host.moc"
