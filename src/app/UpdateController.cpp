#include "app/UpdateController.h"

#include <QDesktopServices>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPushButton>

#include "app/VersionComparison.h"

namespace gf {

namespace {

constexpr int transferTimeoutMs = 30000;
// A feed lists a handful of releases; anything this large is not one.
constexpr qint64 maximumFeedBytes = 4 * 1024 * 1024;

bool isLoopbackHost(const QString& host) {
    if (host.compare(QStringLiteral("localhost"), Qt::CaseInsensitive) == 0) {
        return true;
    }
    const QHostAddress address(host);
    return !address.isNull() && address.isLoopback();
}

UpdateCheckResult failure(QString reason) {
    UpdateCheckResult result;
    result.kind = UpdateCheckResult::Kind::failed;
    result.error = std::move(reason);
    return result;
}

}  // namespace

QUrl UpdateController::defaultFeedUrl() {
    const QByteArray fromEnvironment = qgetenv("GLIMMERFOLD_APPCAST_URL");
    if (!fromEnvironment.isEmpty()) {
        return QUrl(QString::fromUtf8(fromEnvironment));
    }
#ifdef GLIMMERFOLD_APPCAST_URL
    return QUrl(QStringLiteral(GLIMMERFOLD_APPCAST_URL));
#else
    return QUrl();
#endif
}

bool UpdateController::isAcceptableUrl(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty()) {
        return false;
    }
    const QString scheme = url.scheme().toLower();
    if (scheme == QLatin1String("https")) {
        return true;
    }
    return scheme == QLatin1String("http") && isLoopbackHost(url.host());
}

QUrl UpdateController::downloadPageOf(const AppcastItem& item) {
    if (isAcceptableUrl(item.pageUrl)) {
        return item.pageUrl;
    }
    return isAcceptableUrl(item.downloadUrl) ? item.downloadUrl : QUrl();
}

UpdateController::UpdateController(QUrl feedUrl, QString currentVersion, QObject* parent)
    : QObject(parent),
      feedUrl_(std::move(feedUrl)),
      currentVersion_(std::move(currentVersion)),
      network_(std::make_unique<QNetworkAccessManager>()) {
    // Never follow a redirect from HTTPS down to plain HTTP.
    network_->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
}

UpdateController::~UpdateController() {
    if (pendingReply_) {
        pendingReply_->disconnect(this);
        pendingReply_->abort();
    }
}

void UpdateController::checkForUpdates() {
    startCheck(true);
}

void UpdateController::checkInBackground() {
    startCheck(false);
}

void UpdateController::startCheck(bool showResult) {
    showResultOfPendingCheck_ = showResultOfPendingCheck_ || showResult;
    if (pendingReply_) {
        return;
    }
    if (feedUrl_.isEmpty()) {
        UpdateCheckResult result;
        result.kind = UpdateCheckResult::Kind::noFeed;
        finish(result);
        return;
    }
    if (!isAcceptableUrl(feedUrl_)) {
        finish(failure(QStringLiteral("The update feed address \"%1\" is not an HTTPS address.")
                           .arg(feedUrl_.toDisplayString())));
        return;
    }
    QNetworkRequest request(feedUrl_);
    request.setTransferTimeout(transferTimeoutMs);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Glimmerfold/%1").arg(currentVersion_));
    pendingReply_.reset(network_->get(request));
    connect(pendingReply_.get(), &QNetworkReply::finished, this, &UpdateController::handleReply);
}

void UpdateController::handleReply() {
    // The reply emitted the signal we are in, so it may only go later.
    QNetworkReply* reply = pendingReply_.release();
    reply->deleteLater();
    finish(resultOfReply(*reply));
}

UpdateCheckResult UpdateController::resultOfReply(QNetworkReply& reply) const {
    if (reply.error() != QNetworkReply::NoError) {
        return failure(
            QStringLiteral("The update feed could not be loaded: %1").arg(reply.errorString()));
    }
    if (!isAcceptableUrl(reply.url())) {
        return failure(QStringLiteral("The update feed moved to an address that is not HTTPS."));
    }
    const QByteArray feed = reply.read(maximumFeedBytes + 1);
    if (feed.size() > maximumFeedBytes) {
        return failure(QStringLiteral("The update feed is too large to be a release feed."));
    }
    return resultOfFeed(feed);
}

UpdateCheckResult UpdateController::resultOfFeed(const QByteArray& feed) const {
    const AppcastParser::Result parsed = AppcastParser::parse(feed);
    if (!parsed.newest) {
        return failure(QStringLiteral("The update feed could not be read: %1.").arg(parsed.error));
    }
    UpdateCheckResult result;
    result.newest = *parsed.newest;
    result.kind = compareVersions(result.newest.version, currentVersion_) > 0
                      ? UpdateCheckResult::Kind::updateAvailable
                      : UpdateCheckResult::Kind::upToDate;
    return result;
}

void UpdateController::finish(const UpdateCheckResult& result) {
    const bool show = showResultOfPendingCheck_;
    showResultOfPendingCheck_ = false;
    if (show) {
        showResultDialog(result);
    }
    emit checkFinished(result);
}

void UpdateController::showResultDialog(const UpdateCheckResult& result) {
    dialog_ = std::make_unique<QMessageBox>();
    dialog_->setWindowTitle(QStringLiteral("Software Update"));
    dialog_->setIcon(result.kind == UpdateCheckResult::Kind::failed ? QMessageBox::Warning
                                                                    : QMessageBox::Information);
    switch (result.kind) {
        case UpdateCheckResult::Kind::upToDate:
            dialog_->setText(QStringLiteral("You're up to date!"));
            dialog_->setInformativeText(
                QStringLiteral("Glimmerfold %1 is currently the newest version available.")
                    .arg(currentVersion_));
            dialog_->setStandardButtons(QMessageBox::Ok);
            break;
        case UpdateCheckResult::Kind::updateAvailable: {
            dialog_->setText(QStringLiteral("A new version of Glimmerfold is available!"));
            dialog_->setInformativeText(
                QStringLiteral("Glimmerfold %1 is available; you have %2.")
                    .arg(result.newest.shortVersionString, currentVersion_));
            const QUrl page = downloadPageOf(result.newest);
            if (!page.isEmpty()) {
                QPushButton* download = dialog_->addButton(QStringLiteral("Open Download Page"),
                                                           QMessageBox::AcceptRole);
                connect(download, &QPushButton::clicked, this,
                        [page] { QDesktopServices::openUrl(page); });
            }
            dialog_->addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
            break;
        }
        case UpdateCheckResult::Kind::noFeed:
            dialog_->setText(QStringLiteral(
                "This build of Glimmerfold takes its updates from where it was installed."));
            dialog_->setInformativeText(
                QStringLiteral("A distribution package is updated by the package manager, "
                               "together with the rest of the system."));
            dialog_->setStandardButtons(QMessageBox::Ok);
            break;
        case UpdateCheckResult::Kind::failed:
            dialog_->setText(QStringLiteral("Glimmerfold could not check for updates."));
            dialog_->setInformativeText(result.error);
            dialog_->setStandardButtons(QMessageBox::Ok);
            break;
    }
    // Shown without a nested event loop, so the engine keeps running meanwhile.
    dialog_->setModal(false);
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}

}  // namespace gf
