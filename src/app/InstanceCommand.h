#pragma once

#include <QByteArray>
#include <optional>

namespace gf {

// What a later `glimmerfold --enable` (and its siblings) asks of the instance that runs. On the
// socket each is one short line; nothing else is a request.
enum class InstanceCommand {
    enable,
    disable,
    toggle,
    showSettings,
    quit,
};

// The longest request line, newline included; a connection that sends more without a newline is
// not sending a request.
inline constexpr qsizetype longestRequestLine = 16;

QByteArray requestLine(InstanceCommand command);
// The command that `received` asks for when it is exactly one request line; nullopt otherwise.
std::optional<InstanceCommand> parseRequest(const QByteArray& received);

}  // namespace gf
