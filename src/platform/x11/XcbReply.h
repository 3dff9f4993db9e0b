#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <type_traits>

namespace gf {

// XCB hands out replies, events and errors allocated with malloc(); the
// caller owns them and must release them with free().
struct XcbFree {
    void operator()(void* pointer) const { std::free(pointer); }
};

template <typename T>
using XcbPointer = std::unique_ptr<T, XcbFree>;

// Waits for the reply to a request sent earlier. An X error (typically a
// window that vanished) yields an empty pointer; the error itself is dropped
// here because every caller treats it as "no answer".
template <typename ReplyFunction, typename Cookie>
auto xcbReply(xcb_connection_t* connection, ReplyFunction replyFunction, Cookie cookie) {
    using Reply = std::remove_pointer_t<decltype(replyFunction(connection, cookie, nullptr))>;
    xcb_generic_error_t* error = nullptr;
    XcbPointer<Reply> reply(replyFunction(connection, cookie, &error));
    XcbPointer<xcb_generic_error_t> dropped(error);
    return reply;
}

// Waits for the outcome of a checked request without a reply; true when the
// server accepted it.
inline bool xcbSucceeded(xcb_connection_t* connection, xcb_void_cookie_t cookie) {
    XcbPointer<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
    return error == nullptr && xcb_connection_has_error(connection) == 0;
}

}  // namespace gf
