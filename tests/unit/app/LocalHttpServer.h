#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <QUrl>
#include <memory>

namespace gf::test {

// A one-route HTTP server on 127.0.0.1 for feed tests: answers every request
// with the status and body it was given, then closes the connection.
class LocalHttpServer {
  public:
    LocalHttpServer();
    ~LocalHttpServer();

    void respond(int status, QByteArray body, QByteArray contentType = "application/rss+xml");
    QUrl url(const QString& path = QStringLiteral("/appcast.xml")) const;
    int requestCount() const { return requests_; }
    // Stops listening; later requests find nobody at the port.
    void shutDown();

  private:
    void answer();

    std::unique_ptr<QTcpServer> server_;
    quint16 port_ = 0;
    int status_ = 200;
    QByteArray body_;
    QByteArray contentType_;
    int requests_ = 0;
};

}  // namespace gf::test
