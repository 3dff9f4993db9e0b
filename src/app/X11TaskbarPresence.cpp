#include "app/X11TaskbarPresence.h"

#include <QGuiApplication>
#include <QWidget>
#include <iostream>
#include <string>

#include "platform/x11/X11TaskbarHint.h"

namespace gf {

std::unique_ptr<X11TaskbarPresence> X11TaskbarPresence::connect(const char* displayName) {
    std::string error;
    auto hint = X11TaskbarHint::connect(displayName, &error);
    if (!hint) {
        std::cerr << "Glimmerfold cannot set its windows' taskbar presence: " << error << '\n';
        return nullptr;
    }
    return std::make_unique<X11TaskbarPresence>(std::move(hint));
}

X11TaskbarPresence::X11TaskbarPresence(std::unique_ptr<X11TaskbarHint> hint)
    : hint_(std::move(hint)) {}

X11TaskbarPresence::~X11TaskbarPresence() = default;

void X11TaskbarPresence::setListedInTaskbar(QWidget& window, bool listed) {
    // winId() makes the native window if it does not exist yet, so the state
    // is in place before the window is first mapped; the toolkit's requests
    // must reach the server before ours, which travel on another connection.
    const auto id = static_cast<std::uint32_t>(window.winId());
    QGuiApplication::sync();
    hint_->setSkipTaskbar(id, !listed);
}

}  // namespace gf
