#include "platform/x11/XcbConnection.h"

#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <utility>

#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbXkb.h"

namespace gf {

namespace {

xcb_screen_t* screenNumber(xcb_connection_t* connection, int number) {
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; it.rem > 0; --number, xcb_screen_next(&it)) {
        if (number == 0) {
            return it.data;
        }
    }
    return nullptr;
}

std::string describeDisplay(const char* displayName) {
    if (displayName != nullptr && *displayName != '\0') {
        return displayName;
    }
    return "$DISPLAY";
}

}  // namespace

struct XcbConnection::Key {};

XcbConnection::XcbConnection(const Key&, Handle connection, xcb_screen_t* screen, X11Atoms atoms)
    : connection_(std::move(connection)), screen_(screen), atoms_(atoms) {}

XcbConnection::~XcbConnection() = default;

std::unique_ptr<XcbConnection> XcbConnection::open(const char* displayName, std::string* error,
                                                   const X11Atoms* knownAtoms) {
    auto fail = [error](std::string message) -> std::unique_ptr<XcbConnection> {
        if (error != nullptr) {
            *error = std::move(message);
        }
        return nullptr;
    };

    const char* name = (displayName != nullptr && *displayName != '\0') ? displayName : nullptr;
    int preferredScreen = 0;
    Handle connection(xcb_connect(name, &preferredScreen), xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return fail("cannot connect to the X display " + describeDisplay(displayName));
    }
    xcb_screen_t* screen = screenNumber(connection.get(), preferredScreen);
    if (screen == nullptr) {
        return fail("the X display " + describeDisplay(displayName) + " has no screen");
    }

    // Ask for every extension's presence at once; the answers are cached by
    // XCB and read later without another round trip each.
    for (xcb_extension_t* extension :
         {&xcb_xkb_id, &xcb_input_id, &xcb_randr_id, &xcb_res_id, &xcb_test_id}) {
        xcb_prefetch_extension_data(connection.get(), extension);
    }

    std::optional<X11Atoms> atoms = knownAtoms != nullptr ? std::optional<X11Atoms>(*knownAtoms)
                                                          : X11Atoms::intern(connection.get());
    if (!atoms) {
        return fail("the X display " + describeDisplay(displayName) + " refused to intern atoms");
    }
    return std::make_unique<XcbConnection>(Key{}, std::move(connection), screen, *atoms);
}

bool XcbConnection::hasExtension(xcb_extension_t* extension) const {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection_.get(), extension);
    return data != nullptr && data->present != 0;
}

namespace {

xcb_client_message_event_t clientMessage(xcb_window_t window, xcb_atom_t type,
                                         const std::array<std::uint32_t, 5>& data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    std::copy(data.begin(), data.end(), message.data.data32);
    return message;
}

constexpr std::uint32_t kWindowManagerMask =
    XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;

}  // namespace

bool XcbConnection::sendToWindowManager(xcb_window_t window, xcb_atom_t type,
                                        const std::array<std::uint32_t, 5>& data) const {
    const xcb_client_message_event_t message = clientMessage(window, type, data);
    xcb_connection_t* c = connection_.get();
    return xcbSucceeded(c, xcb_send_event_checked(c, 0, root(), kWindowManagerMask,
                                                  reinterpret_cast<const char*>(&message)));
}

void XcbConnection::postToWindowManager(xcb_window_t window, xcb_atom_t type,
                                        const std::array<std::uint32_t, 5>& data) const {
    const xcb_client_message_event_t message = clientMessage(window, type, data);
    xcb_send_event(connection_.get(), 0, root(), kWindowManagerMask,
                   reinterpret_cast<const char*>(&message));
}

void XcbConnection::discardQueuedEvents() const {
    while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_.get())}) {
    }
}

}  // namespace gf
