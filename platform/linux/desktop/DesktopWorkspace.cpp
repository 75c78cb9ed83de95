#include "platform/linux/desktop/DesktopWorkspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

namespace mervo::platform {

namespace {

/// Starts xdg-open and forgets it: it belongs to what it opens. Its words do not go to our standard error.
bool open(const QString& target)
{
    const QString program = QStandardPaths::findExecutable("xdg-open");
    if (program.isEmpty())
        return false;
    QProcess process;
    process.setProgram(program);
    process.setArguments({target});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

QString textOf(const std::filesystem::path& path)
{
    return QString::fromStdString(std::filesystem::absolute(path).string());
}

} // namespace

bool DesktopWorkspace::openFile(const std::filesystem::path& file)
{
    return open(textOf(file)); // absolute, so it is no option
}

bool DesktopWorkspace::openUrl(const std::string& url)
{
    const QUrl parsed = QUrl::fromEncoded(QByteArray::fromStdString(url), QUrl::StrictMode);
    if (!parsed.isValid() || parsed.scheme().isEmpty())
        return false;
    return open(QString::fromStdString(url));
}

bool DesktopWorkspace::revealFile(const std::filesystem::path& file)
{
    const QString path = textOf(file);
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", "ShowItems");
    call << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
    const QString folder = textOf(file.parent_path());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [folder, watcher] {
        if (watcher->isError())
            open(folder);
        watcher->deleteLater();
    });
    return true;
}

void DesktopWorkspace::setBadge(const std::string& label)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        "/com/canonical/unity/launcherentry/mervo", "com.canonical.Unity.LauncherEntry", "Update");
    signal << QString("application://mervo.desktop")
           << QVariantMap{{"count", QString::fromStdString(label).toLongLong()}, {"count-visible", !label.empty()}};
    QDBusConnection::sessionBus().send(signal);
}

} // namespace mervo::platform
