#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <memory>

#include "app/FileLock.h"

namespace gf {

// One Glimmerfold per user and X display. The first launch locks a file beside
// a local socket and listens on the socket; a later launch finds the lock
// taken, asks the running one to show its Settings window and steps aside.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    enum class Claim {
        primary,      // this process is the one that runs
        handedOver,   // another one runs and was asked to show Settings
        unavailable,  // neither worked; this process runs alone
    };

    // The socket for this user and display: in $XDG_RUNTIME_DIR when set,
    // otherwise in the temporary directory with the user id in its name.
    static QString defaultServerName();

    explicit SingleInstance(QString serverName, QObject* parent = nullptr);
    ~SingleInstance() override;

    Claim claim();
    QString serverName() const { return serverName_; }

  signals:
    // A later launch asked for the Settings window.
    void showSettingsRequested();

  private:
    Claim claimWithoutLock();
    bool listen();
    bool askRunningInstance();
    void askRunningInstanceOnceItListens();
    void answerConnections();

    QString serverName_;
    std::unique_ptr<FileLock> lock_;
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace gf
