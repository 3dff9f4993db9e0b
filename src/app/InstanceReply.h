#pragma once

#include <QByteArray>
#include <optional>

namespace gf {

// The running instance's answer to an InstanceCommand: what is true once it has been carried out.
// On the socket each is one short line.
enum class InstanceReply {
    nowEnabled,
    alreadyEnabled,
    nowDisabled,
    alreadyDisabled,
    settingsShown,
    // The instance is ending; it closes the connection when it has.
    quitting,
};

QByteArray replyLine(InstanceReply reply);
// The answer `line` gives when it is exactly one reply line; nullopt otherwise.
std::optional<InstanceReply> parseReply(const QByteArray& line);

}  // namespace gf
