#include "LocalHttpServer.h"

#include <QTcpSocket>

namespace gf::test {

LocalHttpServer::LocalHttpServer() : server_(std::make_unique<QTcpServer>()) {
    if (server_->listen(QHostAddress::LocalHost, 0)) {
        port_ = server_->serverPort();
    }
    QObject::connect(server_.get(), &QTcpServer::newConnection, server_.get(),
                     [this] { answer(); });
}

LocalHttpServer::~LocalHttpServer() = default;

void LocalHttpServer::respond(int status, QByteArray body, QByteArray contentType) {
    status_ = status;
    body_ = std::move(body);
    contentType_ = std::move(contentType);
}

QUrl LocalHttpServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port_).arg(path));
}

void LocalHttpServer::shutDown() {
    server_->close();
}

void LocalHttpServer::answer() {
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
            // The request is small and arrives whole; its end is the blank line.
            if (!socket->peek(64 * 1024).contains("\r\n\r\n")) {
                return;
            }
            socket->readAll();
            ++requests_;
            const QByteArray reason = status_ == 200 ? "OK" : "Error";
            socket->write("HTTP/1.1 " + QByteArray::number(status_) + " " + reason + "\r\n" +
                          "Content-Type: " + contentType_ + "\r\n" +
                          "Content-Length: " + QByteArray::number(body_.size()) + "\r\n" +
                          "Connection: close\r\n\r\n" + body_);
            socket->disconnectFromHost();
        });
    }
}

}  // namespace gf::test
