#include "app/InstanceClient.h"

#include <QDeadlineTimer>

namespace gf {

namespace {

int remainingMs(const QDeadlineTimer& deadline) {
    return static_cast<int>(deadline.remainingTime());
}

}  // namespace

InstanceClient::InstanceClient(QString serverName, std::chrono::milliseconds answerTimeout)
    : serverName_(std::move(serverName)), answerTimeout_(answerTimeout) {}

InstanceClient::Outcome InstanceClient::send(InstanceCommand command) {
    reply_.reset();
    socket_.connectToServer(serverName_);
    if (!socket_.waitForConnected(static_cast<int>(answerTimeout_.count()))) {
        return Outcome::notRunning;
    }
    const QDeadlineTimer deadline(answerTimeout_);
    socket_.write(requestLine(command));
    bool waiting = socket_.waitForBytesWritten(remainingMs(deadline));
    while (waiting && !socket_.canReadLine()) {
        waiting = socket_.waitForReadyRead(remainingMs(deadline));
    }
    if (socket_.canReadLine()) {
        reply_ = parseReply(socket_.readLine());
    }
    return reply_ ? Outcome::answered : Outcome::unanswered;
}

bool InstanceClient::waitForInstanceToEnd() {
    if (socket_.state() == QLocalSocket::UnconnectedState) {
        return true;
    }
    return socket_.waitForDisconnected(static_cast<int>(answerTimeout_.count()));
}

}  // namespace gf
