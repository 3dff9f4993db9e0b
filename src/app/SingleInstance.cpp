#include "app/SingleInstance.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QThread>
#include <iostream>

#include <unistd.h>

namespace gf {

namespace {

const QByteArray showSettingsRequest = "show-settings\n";
const QByteArray acknowledgement = "ok\n";
// A running instance answers at once from its event loop; this bounds a hung one.
constexpr int answerTimeoutMs = 3000;
constexpr unsigned long listenPollMs = 50;

QString displayKey() {
    QString display = qEnvironmentVariable("DISPLAY");
    if (display.isEmpty()) {
        display = QStringLiteral("none");
    }
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]"));
    return display.replace(unsafe, QStringLiteral("_"));
}

}  // namespace

QString SingleInstance::defaultServerName() {
    const QString runtimeDir = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtimeDir) && QDir(runtimeDir).exists()) {
        return QDir(runtimeDir)
            .absoluteFilePath(QStringLiteral("glimmerfold-%1.socket").arg(displayKey()));
    }
    return QDir(QDir::tempPath())
        .absoluteFilePath(
            QStringLiteral("glimmerfold-%1-%2.socket").arg(::getuid()).arg(displayKey()));
}

SingleInstance::SingleInstance(QString serverName, QObject* parent)
    : QObject(parent), serverName_(std::move(serverName)) {}

SingleInstance::~SingleInstance() = default;

// The lock says whether another instance runs, even one that has not started
// listening yet: a socket nobody listens on may be a crashed instance's, or a
// starting one's, and only the lock tells them apart.
SingleInstance::Claim SingleInstance::claim() {
    lock_ = std::make_unique<FileLock>(serverName_ + QStringLiteral(".lock"));
    switch (lock_->state()) {
        case FileLock::State::held:
            // Any socket there was left by an instance that ended without removing it.
            QLocalServer::removeServer(serverName_);
            if (listen()) {
                return Claim::primary;
            }
            std::cerr << "Glimmerfold cannot listen for later launches: "
                      << server_->errorString().toStdString() << '\n';
            return Claim::unavailable;
        case FileLock::State::heldElsewhere:
            askRunningInstanceOnceItListens();
            return Claim::handedOver;
        case FileLock::State::failed:
            break;
    }
    lock_.reset();
    return claimWithoutLock();
}

// Where no lock file can be made, the socket alone decides.
SingleInstance::Claim SingleInstance::claimWithoutLock() {
    if (listen()) {
        return Claim::primary;
    }
    if (askRunningInstance()) {
        return Claim::handedOver;
    }
    // Nobody listens on the socket: a crashed instance left it behind.
    QLocalServer::removeServer(serverName_);
    if (listen()) {
        return Claim::primary;
    }
    std::cerr << "Glimmerfold cannot tell whether it is already running: "
              << server_->errorString().toStdString() << '\n';
    return Claim::unavailable;
}

bool SingleInstance::listen() {
    // No socket options: with them the server is made elsewhere and renamed
    // into place, replacing a running instance's socket. The socket's own
    // permissions and the private runtime directory keep other users out.
    server_ = std::make_unique<QLocalServer>();
    if (!server_->listen(serverName_)) {
        return false;
    }
    connect(server_.get(), &QLocalServer::newConnection, this, &SingleInstance::answerConnections);
    return true;
}

// True when a process listens on the socket, answered or not: an instance takes its socket as
// it starts but answers only from its event loop, which on a loaded machine can be seconds later.
// The request waits in its socket until it reads it and shows Settings.
bool SingleInstance::askRunningInstance() {
    QLocalSocket socket;
    socket.connectToServer(serverName_);
    if (!socket.waitForConnected(answerTimeoutMs)) {
        return false;
    }
    socket.write(showSettingsRequest);
    bool waiting = socket.waitForBytesWritten(answerTimeoutMs);
    while (waiting && !socket.canReadLine()) {
        waiting = socket.waitForReadyRead(answerTimeoutMs);
    }
    return true;
}

// The instance holding the lock may have yet to open its socket.
void SingleInstance::askRunningInstanceOnceItListens() {
    QElapsedTimer waited;
    waited.start();
    while (!askRunningInstance() && waited.elapsed() < answerTimeoutMs) {
        QThread::msleep(listenPollMs);
    }
}

void SingleInstance::answerConnections() {
    while (QLocalSocket* connection = server_->nextPendingConnection()) {
        // The server owns its connections; each is let go once it closes.
        connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
        connect(connection, &QLocalSocket::readyRead, connection, [this, connection] {
            bool asked = false;
            while (connection->canReadLine()) {
                if (connection->readLine() == showSettingsRequest) {
                    connection->write(acknowledgement);
                    asked = true;
                }
            }
            connection->flush();
            if (asked) {
                // Showing a window may run events, which may delete this connection.
                QMetaObject::invokeMethod(this, &SingleInstance::showSettingsRequested,
                                          Qt::QueuedConnection);
            }
        });
    }
}

}  // namespace gf
