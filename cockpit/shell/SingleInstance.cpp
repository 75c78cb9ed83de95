#include "cockpit/shell/SingleInstance.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

namespace mervo {

namespace {

constexpr QByteArrayView kOpen = "open\n";
constexpr QByteArrayView kHeard = "heard\n";
constexpr int kPatience = 5000; ///< milliseconds for the first one's answer
constexpr unsigned long kRetry = 50; ///< milliseconds; the first one may be starting

constexpr qsizetype kMark = 16; ///< characters that tell one home from another; a socket's path has to be short

QString runtimeFile(const std::filesystem::path& home, const char* ending)
{
    const QByteArray path = QByteArray::fromStdString(home.lexically_normal().string());
    const QByteArray mark = QCryptographicHash::hash(path, QCryptographicHash::Sha256).toHex().first(kMark);
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + "/mervo-cockpit-" + mark + ending;
}

bool isHeard(const QString& socket, int patience)
{
    QLocalSocket line;
    line.connectToServer(socket);
    if (!line.waitForConnected(patience))
        return false;
    line.write(kOpen.data(), kOpen.size());
    return line.waitForBytesWritten(patience) && line.waitForReadyRead(patience) && line.readLine() == kHeard;
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& home)
    : socket_(runtimeFile(home, ".socket"))
    , lock_(runtimeFile(home, ".lock"))
{
    lock_.setStaleLockTime(0); // it lasts for months; only its holder's death frees it
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::greet);
}

bool SingleInstance::claim()
{
    return lock_.tryLock();
}

void SingleInstance::listen()
{
    QLocalServer::removeServer(socket_); // one that was killed leaves it behind, and we hold the lock
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_.listen(socket_))
        qWarning("A second start will not find this one: %s.", qUtf8Printable(server_.errorString()));
}

void SingleInstance::greet()
{
    while (QLocalSocket* line = server_.nextPendingConnection()) {
        connect(line, &QLocalSocket::disconnected, line, &QObject::deleteLater);
        connect(line, &QLocalSocket::readyRead, this, [this, line] {
            if (!line->canReadLine() || line->readLine() != kOpen)
                return line->abort();
            line->write(kHeard.data(), kHeard.size());
            line->disconnectFromServer();
            Q_EMIT openRequested();
        });
    }
}

void SingleInstance::tellFirst() const
{
    const QDeadlineTimer end(kPatience);
    while (!isHeard(socket_, static_cast<int>(end.remainingTime()))) {
        if (end.hasExpired())
            throw std::runtime_error("Mervo's cockpit runs already and does not answer; end it and start it again.");
        QThread::msleep(kRetry);
    }
}

} // namespace mervo
