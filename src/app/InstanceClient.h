#pragma once

#include <QLocalSocket>
#include <QString>
#include <chrono>
#include <optional>

#include "app/InstanceCommand.h"
#include "app/InstanceReply.h"

namespace gf {

// The asking end of the single-instance socket: one command to the instance that listens on it,
// and its answer. Blocks the calling thread, for a bounded time.
class InstanceClient {
  public:
    enum class Outcome {
        answered,    // reply() holds the running instance's answer
        notRunning,  // nobody listens on the socket
        unanswered,  // somebody listens but gave no well-formed answer in time
    };

    // A running instance answers from its event loop, which a loaded machine may keep busy for
    // seconds; past this it is taken as hung.
    static constexpr std::chrono::milliseconds defaultAnswerTimeout{10000};

    explicit InstanceClient(QString serverName,
                            std::chrono::milliseconds answerTimeout = defaultAnswerTimeout);

    Outcome send(InstanceCommand command);
    std::optional<InstanceReply> reply() const { return reply_; }
    // After a quitting answer: true once the instance has closed its end of the connection,
    // which it does by ending, within the answer timeout.
    bool waitForInstanceToEnd();

  private:
    QString serverName_;
    std::chrono::milliseconds answerTimeout_;
    QLocalSocket socket_;
    std::optional<InstanceReply> reply_;
};

}  // namespace gf
