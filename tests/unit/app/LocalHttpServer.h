#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <memory>

namespace gf::test {

// Answers every request on 127.0.0.1 with the status and body it was given, then hangs up.
class LocalHttpServer {
  public:
    LocalHttpServer() {
        if (server_->listen(QHostAddress::LocalHost, 0)) {
            port_ = server_->serverPort();
        }
        QObject::connect(server_.get(), &QTcpServer::newConnection, server_.get(),
                         [this] { answer(); });
    }

    void respond(int status, QByteArray body, QByteArray contentType = "application/rss+xml") {
        status_ = status;
        body_ = std::move(body);
        contentType_ = std::move(contentType);
    }
    QUrl url(const QString& path = QStringLiteral("/appcast.xml")) const {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port_).arg(path));
    }
    int requestCount() const { return requests_; }
    void shutDown() { server_->close(); }  // later requests find nobody at the port

  private:
    void answer() {
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

    std::unique_ptr<QTcpServer> server_ = std::make_unique<QTcpServer>();
    quint16 port_ = 0;
    int status_ = 200;
    QByteArray body_;
    QByteArray contentType_;
    int requests_ = 0;
};

}  // namespace gf::test
