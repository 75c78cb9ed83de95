#include "cockpit/shell/Options.h"
#include "cockpit/shell/Shell.h"
#include "cockpit/shell/SingleInstance.h"
#include "cockpit/shell/TerminationSignals.h"
#include "core/foundation/ConfigDir.h"

#include <QApplication>
#include <QQuickWindow>
#include <QStyleHints>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <fmt/core.h>
#include <unistd.h>

namespace {

enum ExitCode { success = 0, failure = 1, wrongUsage = 2 };

void complain(const std::string& sentence)
{
    fmt::print(stderr, "mervo-cockpit: {}\n", sentence);
}

/// Until the application stands, Qt has only one thing to say that a person can use: that there is no display. It would
/// end with an abort.
void whileStarting(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtFatalMsg)
        return;
    complain(message.contains("platform plugin") ? "The display cannot be opened; start it within a desktop session."
                                                 : message.toStdString());
    ::_exit(failure);
}

bool hasDisplay()
{
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qgetenv(name).isEmpty())
            return true;
    }
    return false;
}

int runSecond(const mervo::Options& options, mervo::SingleInstance& instance)
{
    if (options.hidden && !options.open)
        return success;
    int count = 0;
    const QCoreApplication application(count, nullptr);
    try {
        instance.tellFirst();
    } catch (const std::exception& problem) {
        complain(problem.what());
        return failure;
    }
    return success;
}

int runFirst(const mervo::Options& options, mervo::SingleInstance& instance, int count, char** words)
{
    if (!hasDisplay()) {
        complain("There is no display; start it within a desktop session.");
        return failure;
    }
    const auto usual = qInstallMessageHandler(whileStarting);
    const QApplication application(count, words);
    qInstallMessageHandler(usual);
    QApplication::setApplicationName("mervo-cockpit");
    QApplication::setApplicationDisplayName("Mervo");
    QApplication::setDesktopFileName("mervo");
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::styleHints()->setCursorFlashTime(0); // a blinking cursor is all that an idle window would do
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    mervo::Shell shell(QCoreApplication::applicationFilePath().toStdString());
    mervo::TerminationSignals signals;
    QObject::connect(&signals, &mervo::TerminationSignals::received, &application, &QCoreApplication::quit);
    QObject::connect(&instance, &mervo::SingleInstance::openRequested, &shell, &mervo::Shell::open);
    // After the icon has been handed to the tray.
    QTimer::singleShot(0, &shell, [&] {
        shell.start();
        instance.listen();
        if (options.open)
            shell.open();
    });
    return QApplication::exec();
}

} // namespace

int main(int count, char** words)
{
    const auto options = mervo::Options::parse({words + 1, words + std::max(count, 1)});
    switch (options.task) {
    case mervo::Options::Task::help:
        fmt::print("{}", mervo::kUsage);
        return success;
    case mervo::Options::Task::version:
        fmt::print("mervo-cockpit {}\n", MERVO_VERSION);
        return success;
    case mervo::Options::Task::wrongUsage:
        complain(options.complaint);
        return wrongUsage;
    case mervo::Options::Task::start:
        break;
    }
    mervo::SingleInstance instance(mervo::ConfigDir::url());
    if (!instance.claim())
        return runSecond(options, instance);
    return runFirst(options, instance, count, words);
}
