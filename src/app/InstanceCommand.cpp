#include "app/InstanceCommand.h"

#include <array>
#include <utility>

namespace gf {

namespace {

constexpr std::array<std::pair<InstanceCommand, const char*>, 5> requestLines{{
    {InstanceCommand::enable, "enable\n"},
    {InstanceCommand::disable, "disable\n"},
    {InstanceCommand::toggle, "toggle\n"},
    {InstanceCommand::showSettings, "show-settings\n"},
    {InstanceCommand::quit, "quit\n"},
}};

}  // namespace

QByteArray requestLine(InstanceCommand command) {
    for (const auto& [known, line] : requestLines) {
        if (known == command) {
            return line;
        }
    }
    return {};
}

std::optional<InstanceCommand> parseRequest(const QByteArray& received) {
    for (const auto& [command, line] : requestLines) {
        if (received == line) {
            return command;
        }
    }
    return std::nullopt;
}

}  // namespace gf
