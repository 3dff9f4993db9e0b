#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <string>

namespace gf::bench {

// Finds an application's tray icon: a viewable window larger than a pixel
// whose WM_CLASS class is the application's, anywhere below a start window.
// Each level of the tree costs one pipelined round trip, so it can be asked
// every few milliseconds while a program starts without loading the server.
std::optional<xcb_window_t> findViewableWindowOfClass(xcb_connection_t* connection,
                                                      xcb_window_t top,
                                                      const std::string& windowClass);

// The class part of a WM_CLASS value ("instance\0class\0").
std::string classPart(const std::string& wmClass);

}  // namespace gf::bench
