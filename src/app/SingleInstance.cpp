#include "app/SingleInstance.h"

#include <QDir>
#include <QLocalSocket>
#include <QRegularExpression>
#include <iostream>

#include <unistd.h>

namespace gf {

namespace {

const QByteArray showSettingsRequest = "show-settings\n";
const QByteArray acknowledgement = "ok\n";
// A running instance answers at once from its event loop; this bounds a hung one.
constexpr int answerTimeoutMs = 3000;

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

SingleInstance::Claim SingleInstance::claim() {
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
// Taking the socket from it then would leave two running; the request waits in its socket until
// it reads it and shows Settings.
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
