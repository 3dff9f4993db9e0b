#include "app/UpdateController.h"

#include <QAbstractButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <memory>

#include "TestHelpers.h"
#include "UrlRecorder.h"
#include "app/VersionComparison.h"

namespace gf::test {
namespace {

// Answers every request on 127.0.0.1 with the status and body it was given, then hangs up.
class LocalHttpServer {
  public:
    LocalHttpServer() {
        server_->listen(QHostAddress::LocalHost, 0);
        QObject::connect(server_.get(), &QTcpServer::newConnection, server_.get(),
                         [this] { answer(); });
    }

    void respond(int status, QByteArray body) {
        status_ = status;
        body_ = std::move(body);
    }
    QUrl url() const {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/appcast.xml").arg(server_->serverPort()));
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
                              "Content-Type: application/rss+xml\r\n" +
                              "Content-Length: " + QByteArray::number(body_.size()) + "\r\n" +
                              "Connection: close\r\n\r\n" + body_);
                socket->disconnectFromHost();
            });
        }
    }

    std::unique_ptr<QTcpServer> server_ = std::make_unique<QTcpServer>();
    int status_ = 200;
    QByteArray body_;
    int requests_ = 0;
};

QByteArray feedWith(const QByteArray& items) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\">"
           "<channel><title>Glimmerfold</title>" +
           items + "</channel></rss>";
}

QByteArray item(const QByteArray& version, const QByteArray& shortVersion,
                const QByteArray& extra = {}) {
    return "<item><title>Glimmerfold " + shortVersion + "</title>" + "<sparkle:version>" + version +
           "</sparkle:version>" + "<sparkle:shortVersionString>" + shortVersion +
           "</sparkle:shortVersionString>" +
           "<enclosure url=\"https://downloads.example.org/glimmerfold-" + version +
           ".deb\" length=\"1\" type=\"application/vnd.debian.binary-package\"/>" + extra +
           "</item>";
}

class UpdateControllerTest : public ::testing::Test {
  protected:
    UpdateCheckResult check(UpdateController& controller, bool withDialog = false) {
        QSignalSpy finished(&controller, &UpdateController::checkFinished);
        withDialog ? controller.checkForUpdates() : controller.checkInBackground();
        EXPECT_TRUE(controller.isChecking() || finished.count() == 1) << "never blocks";
        processEventsUntil([&] { return !finished.isEmpty(); });
        if (finished.isEmpty()) {
            ADD_FAILURE() << "the check never finished";
            return {};
        }
        return finished.front().front().value<UpdateCheckResult>();
    }

    LocalHttpServer server;
    UrlRecorder opened{{QStringLiteral("https"), QStringLiteral("http")}};
};

TEST_F(UpdateControllerTest, NewerReleaseInTheFeedIsOfferedWithItsDownloadPage) {
    server.respond(200, feedWith(item("0.1.0", "0.1.0") +
                                 item("0.3.0", "0.3 &quot;Fold&quot;",
                                      "<link>https://example.org/releases/0.3</link>"
                                      "<sparkle:releaseNotesLink>https://example.org/notes/0.3"
                                      "</sparkle:releaseNotesLink>") +
                                 item("0.2.5", "0.2.5")));
    UpdateController controller(server.url(), "0.2.0");
    const auto result = check(controller, true);
    ASSERT_EQ(result.kind, UpdateCheckResult::Kind::updateAvailable) << result.error.toStdString();
    EXPECT_EQ(result.newest.version, "0.3.0");
    EXPECT_EQ(result.newest.shortVersionString, "0.3 \"Fold\"");
    EXPECT_EQ(result.newest.releaseNotesUrl, QUrl("https://example.org/notes/0.3"));

    QMessageBox* dialog = controller.resultDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    const auto buttons = dialog->buttons();
    const auto download =
        std::ranges::find(buttons, QString("Open Download Page"), &QAbstractButton::text);
    ASSERT_NE(download, buttons.end());
    (*download)->click();
    EXPECT_EQ(opened.urls(), QList<QUrl>{QUrl("https://example.org/releases/0.3")});
}

TEST_F(UpdateControllerTest, SameOrOlderReleaseIsUpToDateAndEnclosureVersionsCountToo) {
    server.respond(200, feedWith(item("0.2.0", "0.2.0") + item("0.2.0-rc1", "0.2.0 RC1")));
    UpdateController current(server.url(), "0.2.0");
    const auto upToDate = check(current, true);
    EXPECT_EQ(upToDate.kind, UpdateCheckResult::Kind::upToDate) << upToDate.error.toStdString();

    server.respond(200,
                   feedWith("<item><enclosure url=\"https://example.org/g.deb\" "
                            "sparkle:version=\"1.4\" sparkle:shortVersionString=\"1.4\"/></item>"));
    UpdateController older(server.url(), "1.3.9");
    const auto result = check(older);
    EXPECT_EQ(result.kind, UpdateCheckResult::Kind::updateAvailable);
    EXPECT_EQ(UpdateController::downloadPageOf(result.newest), QUrl("https://example.org/g.deb"));
}

TEST_F(UpdateControllerTest, FeedsThatCannotBeUsedFailWithAReason) {
    struct Case {
        const char* what;
        int status;
        QByteArray body;
    };
    const Case cases[] = {
        {"not XML", 200, "this is not a feed"},
        {"cut off", 200, feedWith(item("9.0", "9.0")).left(150)},
        {"not RSS", 200, "<html><body>Not found</body></html>"},
        {"no usable item", 200, feedWith("<item><title>no version</title></item>")},
        {"HTTP error", 404, "missing"},
    };
    for (const Case& c : cases) {
        server.respond(c.status, c.body);
        UpdateController controller(server.url(), "0.1.0");
        const auto result = check(controller, true);
        EXPECT_EQ(result.kind, UpdateCheckResult::Kind::failed) << c.what;
        EXPECT_FALSE(result.error.isEmpty()) << c.what;
        ASSERT_NE(controller.resultDialog(), nullptr);
        EXPECT_EQ(controller.resultDialog()->informativeText(), result.error) << c.what;
    }

    // A server that is down fails as well, without blocking.
    const QUrl url = server.url();
    server.shutDown();
    UpdateController controller(url, "0.1.0");
    const auto result = check(controller);
    EXPECT_EQ(result.kind, UpdateCheckResult::Kind::failed);
    EXPECT_TRUE(result.error.startsWith("The update feed could not be loaded"))
        << result.error.toStdString();
}

TEST_F(UpdateControllerTest,
       OnlyHttpsFeedsAreFetchedExceptFromLoopbackOrTheEnvironmentAndNoneWithoutAFeed) {
    for (const char* url : {"https://example.org/appcast.xml", "http://127.0.0.1:8080/a.xml",
                            "http://[::1]/a.xml", "http://localhost/a.xml"}) {
        EXPECT_TRUE(UpdateController::isAcceptableUrl(QUrl(url))) << url;
    }
    for (const char* url : {"http://example.org/appcast.xml", "http://127.0.0.1.example.org/a.xml",
                            "file:///tmp/appcast.xml", "ftp://example.org/appcast.xml"}) {
        EXPECT_FALSE(UpdateController::isAcceptableUrl(QUrl(url))) << url;
    }

    // A plain-HTTP feed elsewhere is refused before anything is sent.
    UpdateController controller(QUrl("http://example.org/appcast.xml"), "0.1.0");
    const auto result = check(controller);
    EXPECT_EQ(result.kind, UpdateCheckResult::Kind::failed);
    EXPECT_EQ(server.requestCount(), 0);

    {
        const ScopedEnvironment feed("GLIMMERFOLD_APPCAST_URL", "http://127.0.0.1:9/feed.xml");
        EXPECT_EQ(UpdateController::defaultFeedUrl(), QUrl("http://127.0.0.1:9/feed.xml"));
        qunsetenv("GLIMMERFOLD_APPCAST_URL");
        const QUrl builtIn = UpdateController::defaultFeedUrl();
        EXPECT_TRUE(builtIn.isEmpty() || builtIn.scheme() == "https")
            << builtIn.toString().toStdString();
    }

    // A build without a feed of its own is updated by whatever installed it, and says so.
    UpdateController unfed(QUrl(), "0.1.0");
    const auto noFeed = check(unfed, true);
    EXPECT_EQ(noFeed.kind, UpdateCheckResult::Kind::noFeed);
    ASSERT_NE(unfed.resultDialog(), nullptr);
    EXPECT_EQ(unfed.resultDialog()->icon(), QMessageBox::Information);
    EXPECT_TRUE(unfed.resultDialog()->text().contains("from where it was installed"));
    EXPECT_TRUE(unfed.resultDialog()->informativeText().contains("package manager"));
    EXPECT_EQ(server.requestCount(), 0);
}

struct Ordered {
    const char* lower;
    const char* higher;
};

class VersionOrderTest : public ::testing::TestWithParam<Ordered> {};

TEST_P(VersionOrderTest, LowerComesBeforeHigherBothWays) {
    const Ordered pair = GetParam();
    EXPECT_LT(compareVersions(pair.lower, pair.higher), 0) << pair.lower << " < " << pair.higher;
    EXPECT_GT(compareVersions(pair.higher, pair.lower), 0) << pair.higher << " > " << pair.lower;
}

INSTANTIATE_TEST_SUITE_P(VersionComparison, VersionOrderTest,
                         ::testing::Values(
                             // Components compare as numbers, not as text.
                             Ordered{"1.9", "1.10"}, Ordered{"0.1.0", "0.2.0"}, Ordered{"2", "10"},
                             Ordered{"1.0", "1.0.1"},
                             Ordered{"99999999999999999998", "99999999999999999999"},
                             // A pre-release comes before its release and before anything later.
                             Ordered{"1.0beta", "1.0"}, Ordered{"1.0-rc1", "1.0"},
                             Ordered{"1.0.0-alpha", "1.0.0"}, Ordered{"1.0b2", "1.0b10"},
                             Ordered{"1.0alpha", "1.0beta"}, Ordered{"1.0beta9", "1.0rc1"},
                             Ordered{"1.0rc1", "1.0.1"}, Ordered{"1.0", "1.1beta"}));

TEST(VersionComparisonTest, EqualVersionsCompareEqual) {
    EXPECT_EQ(compareVersions("1.0", "1.0.0"), 0);
    EXPECT_EQ(compareVersions("1.02", "1.2"), 0);
    EXPECT_EQ(compareVersions("1.0RC1", "1.0rc1"), 0);
    EXPECT_EQ(compareVersions("", ""), 0);
}

}  // namespace
}  // namespace gf::test
