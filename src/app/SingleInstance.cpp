#include "app/SingleInstance.h"

#include <sys/socket.h>

#include <QDir>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QPointer>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>
#include <iostream>

#include "app/InstanceClient.h"

namespace gf {

namespace {

// How long a later launch waits for an instance that holds the lock to open its socket.
constexpr int listenWaitMs = 3000;
constexpr unsigned long listenPollMs = 50;

QString displayKey() {
    QString display = qEnvironmentVariable("DISPLAY");
    if (display.isEmpty()) {
        display = QStringLiteral("none");
    }
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]"));
    return display.replace(unsafe, QStringLiteral("_"));
}

// Whatever the connection sent has no effect and gets no answer.
void drop(QLocalSocket& connection) {
    connection.abort();
    connection.deleteLater();
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

SingleInstance::SingleInstance(QString serverName, uid_t commandingUser, QObject* parent)
    : QObject(parent), serverName_(std::move(serverName)), commandingUser_(commandingUser) {}

SingleInstance::~SingleInstance() = default;

void SingleInstance::setCommandHandler(CommandHandler handler) {
    commandHandler_ = std::move(handler);
}

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
    InstanceClient client(serverName_, handOverTimeout);
    const InstanceClient::Outcome outcome = client.send(InstanceCommand::showSettings);
    handOverReply_ = client.reply();
    return outcome != InstanceClient::Outcome::notRunning;
}

// The instance holding the lock may have yet to open its socket.
void SingleInstance::askRunningInstanceOnceItListens() {
    QElapsedTimer waited;
    waited.start();
    while (!askRunningInstance() && waited.elapsed() < listenWaitMs) {
        QThread::msleep(listenPollMs);
    }
}

void SingleInstance::answerConnections() {
    while (QLocalSocket* connection = server_->nextPendingConnection()) {
        admit(connection);
    }
}

void SingleInstance::admit(QLocalSocket* connection) {
    // The server owns its connections; each is let go once it closes.
    connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
    if (!commandHandler_ || !isFromCommandingUser(*connection)) {
        drop(*connection);
        return;
    }
    // Qt reads no more than this ahead, so an endless line costs nothing.
    connection->setReadBufferSize(longestRequestLine);
    auto answered = std::make_shared<bool>(false);
    QTimer::singleShot(requestTimeoutMs, connection, [connection, answered] {
        if (!*answered) {
            drop(*connection);
        }
    });
    connect(connection, &QLocalSocket::readyRead, this,
            [this, connection, answered] { readRequest(connection, *answered); });
}

void SingleInstance::readRequest(QLocalSocket* connection, bool& answered) {
    if (!connection->canReadLine()) {
        if (connection->bytesAvailable() >= longestRequestLine) {
            drop(*connection);
        }
        return;
    }
    // One line and nothing after it: a client that sends more is not one of ours.
    const std::optional<InstanceCommand> command = parseRequest(connection->readAll());
    if (!command) {
        drop(*connection);
        return;
    }
    disconnect(connection, &QLocalSocket::readyRead, this, nullptr);
    answered = true;
    // Carrying out the command may run events, in which the client may go away.
    const QPointer<QLocalSocket> alive(connection);
    const InstanceReply reply = commandHandler_(*command);
    if (!alive) {
        return;
    }
    connection->write(replyLine(reply));
    connection->flush();
    // Quitting, the connection stays open until the process ends, which is how the client
    // learns that it has.
    if (reply != InstanceReply::quitting) {
        connection->disconnectFromServer();
    }
}

// The socket lives in a directory only its user can enter, but its path may be elsewhere (the
// temporary directory), so the kernel is asked who connected.
bool SingleInstance::isFromCommandingUser(const QLocalSocket& connection) const {
    ucred peer{};
    socklen_t size = sizeof(peer);
    const auto fd = static_cast<int>(connection.socketDescriptor());
    return ::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && size == sizeof(peer) &&
           peer.uid == commandingUser_;
}

}  // namespace gf
