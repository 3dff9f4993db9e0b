#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;
class QWidget;

namespace gf {

// The newest release a feed announces.
struct AppcastItem {
    QString version;             // the build version compared against ours
    QString shortVersionString;  // the version shown to people
    QUrl downloadUrl;            // the enclosure
    QUrl releaseNotesUrl;        // may be empty
};

// The outcome of one update check.
struct UpdateCheckResult {
    enum class Kind { upToDate, updateAvailable, failed };
    Kind kind = Kind::failed;
    AppcastItem newest;  // set unless the check failed
    QString error;       // why the check failed
};

// Behind "Check for Updates...": fetches the release feed in the background,
// compares its newest release with this build and tells the user in a dialog.
class UpdateController : public QObject {
    Q_OBJECT

  public:
    // The feed this build checks: $GLIMMERFOLD_APPCAST_URL when set, else the
    // one configured at build time.
    static QUrl defaultFeedUrl();

    UpdateController(QUrl feedUrl, QString currentVersion, QObject* parent = nullptr);
    ~UpdateController() override;

    // Starts a check whose result is shown in a dialog; returns at once.
    void checkForUpdates();
    // Starts a check whose result only goes to checkFinished.
    void checkInBackground();
    bool isChecking() const;

    QUrl feedUrl() const { return feedUrl_; }
    QString currentVersion() const { return currentVersion_; }
    // Tests and automation answer dialogs themselves.
    void setShowsDialogs(bool shows) { showsDialogs_ = shows; }

  signals:
    void checkFinished(const gf::UpdateCheckResult& result);

  private:
    void startCheck(bool showResult);
    void handleReply(QNetworkReply* reply);
    void finish(const UpdateCheckResult& result);
    void showResultDialog(const UpdateCheckResult& result);

    QUrl feedUrl_;
    QString currentVersion_;
    std::unique_ptr<QNetworkAccessManager> network_;
    QNetworkReply* pendingReply_ = nullptr;  // owned by network_ until it finishes
    bool showResultOfPendingCheck_ = false;
    bool showsDialogs_ = true;
};

}  // namespace gf
