#pragma once

#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>

#include "app/AppcastParser.h"

class QNetworkAccessManager;
class QNetworkReply;

namespace gf {

// The outcome of one update check.
struct UpdateCheckResult {
    // noFeed: this build has no release feed; it is updated by whatever installed it.
    enum class Kind { upToDate, updateAvailable, failed, noFeed };
    Kind kind = Kind::failed;
    AppcastItem newest;  // set unless the check failed
    QString error;       // why the check failed
};

// Behind "Check for Updates...": fetches the release feed in the background,
// compares its newest release with this build and tells the user in a dialog.
// The feed's sparkle:version is compared with this build's version. A build
// without a feed says where its updates come from instead.
class UpdateController : public QObject {
    Q_OBJECT

  public:
    // $GLIMMERFOLD_APPCAST_URL when set, else the feed configured at build time;
    // empty when there is none.
    static QUrl defaultFeedUrl();
    // Feeds and the pages they point to are fetched or opened only over HTTPS,
    // except on this machine's loopback interface (for tests and staging).
    static bool isAcceptableUrl(const QUrl& url);

    UpdateController(QUrl feedUrl, QString currentVersion, QObject* parent = nullptr);
    ~UpdateController() override;

    // Starts a check whose result is shown in a dialog; returns at once. A
    // check already running is not started again, only its result shown.
    void checkForUpdates();
    // Starts a check whose result only goes to checkFinished.
    void checkInBackground();
    bool isChecking() const { return pendingReply_ != nullptr; }

    QUrl feedUrl() const { return feedUrl_; }
    QString currentVersion() const { return currentVersion_; }

    // The dialog of the last check that showed one; nullptr before.
    QMessageBox* resultDialog() const { return dialog_.get(); }
    // The page the dialog's download button opens for a newer release.
    static QUrl downloadPageOf(const AppcastItem& item);

  signals:
    void checkFinished(const gf::UpdateCheckResult& result);

  private:
    void startCheck(bool showResult);
    void handleReply();
    UpdateCheckResult resultOfReply(QNetworkReply& reply) const;
    UpdateCheckResult resultOfFeed(const QByteArray& feed) const;
    void finish(const UpdateCheckResult& result);
    void showResultDialog(const UpdateCheckResult& result);

    QUrl feedUrl_;
    QString currentVersion_;
    std::unique_ptr<QNetworkAccessManager> network_;
    std::unique_ptr<QNetworkReply> pendingReply_;
    bool showResultOfPendingCheck_ = false;
    std::unique_ptr<QMessageBox> dialog_;
};

}  // namespace gf
