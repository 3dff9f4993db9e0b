#include "platform/x11/X11TaskbarPresence.h"

#include <QGuiApplication>
#include <QWidget>
#include <iostream>

#include "platform/x11/X11TaskbarHint.h"

namespace gf {

std::unique_ptr<X11TaskbarPresence> X11TaskbarPresence::forApplication() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    auto hint = X11TaskbarHint::onConnection(x11 != nullptr ? x11->connection() : nullptr);
    if (!hint) {
        std::cerr << "Glimmerfold cannot choose whether its windows appear in the taskbar: "
                     "the application does not run on an X display.\n";
        return nullptr;
    }
    return std::make_unique<X11TaskbarPresence>(std::move(hint));
}

X11TaskbarPresence::X11TaskbarPresence(std::unique_ptr<X11TaskbarHint> hint)
    : hint_(std::move(hint)) {}

X11TaskbarPresence::~X11TaskbarPresence() = default;

void X11TaskbarPresence::setListedInTaskbar(QWidget& window, bool listed) {
    // winId() makes the native window if it does not exist yet, so the state
    // is in place before the window is first mapped.
    hint_->setSkipTaskbar(static_cast<std::uint32_t>(window.winId()), !listed);
}

}  // namespace gf
