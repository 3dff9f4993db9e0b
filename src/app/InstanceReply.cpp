#include "app/InstanceReply.h"

#include <array>
#include <utility>

namespace gf {

namespace {

constexpr std::array<std::pair<InstanceReply, const char*>, 6> replyLines{{
    {InstanceReply::nowEnabled, "enabled\n"},
    {InstanceReply::alreadyEnabled, "already-enabled\n"},
    {InstanceReply::nowDisabled, "disabled\n"},
    {InstanceReply::alreadyDisabled, "already-disabled\n"},
    {InstanceReply::settingsShown, "settings-shown\n"},
    {InstanceReply::quitting, "quitting\n"},
}};

}  // namespace

QByteArray replyLine(InstanceReply reply) {
    for (const auto& [known, line] : replyLines) {
        if (known == reply) {
            return line;
        }
    }
    return {};
}

std::optional<InstanceReply> parseReply(const QByteArray& line) {
    for (const auto& [reply, text] : replyLines) {
        if (line == text) {
            return reply;
        }
    }
    return std::nullopt;
}

}  // namespace gf
