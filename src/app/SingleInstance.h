#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "app/FileLock.h"
#include "app/InstanceCommand.h"
#include "app/InstanceReply.h"

class QLocalSocket;

namespace gf {

// One Glimmerfold per user and X display. The first launch locks a file beside
// a local socket and listens on the socket; a later launch finds the lock
// taken, asks the running one to show its Settings window and steps aside.
// The socket also carries the commands of `glimmerfold --enable` and its
// siblings (InstanceClient): one request line per connection from the same
// user, answered with one reply line; anything else is dropped unanswered.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    enum class Claim {
        primary,      // this process is the one that runs
        handedOver,   // another one runs and was asked to show Settings
        unavailable,  // neither worked; this process runs alone
    };

    // Carries out a command in the running instance and says what is now true.
    using CommandHandler = std::function<InstanceReply(InstanceCommand)>;

    // A connection that has not sent its request by then is dropped, so a
    // silent client holds nothing for long.
    static constexpr int requestTimeoutMs = 2000;
    // How long a later launch waits for the running one's answer. It need not
    // wait for long: the request waits in the socket until it is read.
    static constexpr std::chrono::milliseconds handOverTimeout{3000};

    // The socket for this user and display: in $XDG_RUNTIME_DIR when set,
    // otherwise in the temporary directory with the user id in its name.
    static QString defaultServerName();

    // Only connections from `commandingUser` are answered.
    explicit SingleInstance(QString serverName, uid_t commandingUser = ::getuid(),
                            QObject* parent = nullptr);
    ~SingleInstance() override;

    Claim claim();
    QString serverName() const { return serverName_; }
    // What the running instance answered when this launch handed over to it;
    // nullopt when it did not answer in time.
    std::optional<InstanceReply> handOverReply() const { return handOverReply_; }
    // Until a handler is set, requests are dropped unanswered.
    void setCommandHandler(CommandHandler handler);

  private:
    Claim claimWithoutLock();
    bool listen();
    bool askRunningInstance();
    void askRunningInstanceOnceItListens();
    void answerConnections();
    void admit(QLocalSocket* connection);
    void readRequest(QLocalSocket* connection, bool& answered);
    bool isFromCommandingUser(const QLocalSocket& connection) const;

    QString serverName_;
    uid_t commandingUser_;
    std::unique_ptr<FileLock> lock_;
    std::unique_ptr<QLocalServer> server_;
    std::optional<InstanceReply> handOverReply_;
    CommandHandler commandHandler_;
};

}  // namespace gf
