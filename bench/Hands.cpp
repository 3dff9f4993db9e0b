#include "Hands.h"

#include <xcb/xtest.h>

namespace gf::bench {

struct Hands::Key {};

std::unique_ptr<Hands> Hands::open(const std::string& displayName, std::string* error) {
    xcb_connection_t* connection = xcb_connect(displayName.c_str(), nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        *error = "cannot connect to " + displayName + " to play input";
        return nullptr;
    }
    return std::make_unique<Hands>(Key{}, connection);
}

Hands::Hands(const Key&, xcb_connection_t* connection)
    : connection_(connection),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
      driver_(std::make_unique<test::XTestDriver>(connection, root_)) {}

Hands::~Hands() {
    driver_.reset();
    xcb_disconnect(connection_);
}

void Hands::moveTo(int x, int y) {
    xcb_test_fake_input(connection_, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    xcb_flush(connection_);
}

}  // namespace gf::bench
