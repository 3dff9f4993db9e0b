#include "WindowCrowd.h"

#include <unistd.h>

#include <array>
#include <chrono>

#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;

constexpr int kWindowWidth = 150;
constexpr int kWindowHeight = 90;
// A grid cell, larger than a window and its decorations.
constexpr int kCellWidth = 180;
constexpr int kCellHeight = 130;
// Below the tray host at the top of the screen.
constexpr int kTopMargin = 40;
// Later rounds over the grid are shifted by up to this much, so that the
// windows in a cell overlap the way a real pile does rather than coincide.
constexpr int kRounds = 5;
constexpr int kRoundShiftX = 9;
constexpr int kRoundShiftY = 6;
constexpr auto kManageTimeout = 30s;

// WM_SIZE_HINTS: the program chose position and size, so the window manager puts it there.
constexpr std::uint32_t kUserPosition = 1u << 0;
constexpr std::uint32_t kUserSize = 1u << 1;

}  // namespace

struct WindowCrowd::Key {};

std::unique_ptr<WindowCrowd> WindowCrowd::open(const std::string& displayName, std::string* error) {
    xcb_connection_t* connection = xcb_connect(displayName.c_str(), nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        *error = "the window crowd cannot connect to " + displayName;
        return nullptr;
    }
    return std::make_unique<WindowCrowd>(Key{}, connection);
}

WindowCrowd::WindowCrowd(const Key&, xcb_connection_t* connection)
    : connection_(connection),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
      probe_(connection, root_) {}

WindowCrowd::~WindowCrowd() {
    xcb_disconnect(connection_);
}

bool WindowCrowd::growTo(std::size_t count, const Rect& keepClear) {
    const std::vector<Rect> cells = gridClearOf(keepClear);
    if (cells.empty()) {
        return false;
    }
    std::vector<Placed> placed;
    for (std::size_t i = windows_.size(); i < count; ++i) {
        const Rect& cell = cells[i % cells.size()];
        const auto round = static_cast<int>((i / cells.size()) % kRounds);
        const int x = static_cast<int>(cell.x) + round * kRoundShiftX;
        const int y = static_cast<int>(cell.y) + round * kRoundShiftY;
        placed.push_back({create(x, y, kWindowWidth, kWindowHeight), x, y});
    }
    xcb_flush(connection_);
    return waitUntilManaged(placed);
}

std::optional<test::WindowId> WindowCrowd::add(int x, int y, int width, int height) {
    const test::WindowId window = create(x, y, width, height);
    xcb_flush(connection_);
    if (!waitUntilManaged({{window, x, y}})) {
        return std::nullopt;
    }
    return window;
}

test::WindowId WindowCrowd::create(int x, int y, int width, int height) {
    const xcb_window_t window = xcb_generate_id(connection_);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    const std::uint32_t background = screen->white_pixel;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL,
                      &background);
    const std::string name = "crowd " + std::to_string(windows_.size() + 1);
    const std::string wmClass = std::string("glimmerfold-bench\0GlimmerfoldBench\0", 35);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(wmClass.size()),
                        wmClass.data());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(name.size()), name.data());
    std::array<std::uint32_t, 18> hints{};
    hints[0] = kUserPosition | kUserSize;
    hints[1] = static_cast<std::uint32_t>(x);
    hints[2] = static_cast<std::uint32_t>(y);
    hints[3] = static_cast<std::uint32_t>(width);
    hints[4] = static_cast<std::uint32_t>(height);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
    const auto pid = static_cast<std::uint32_t>(getpid());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, probe_.atom("_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &pid);
    xcb_map_window(connection_, window);
    windows_.push_back(window);
    return window;
}

bool WindowCrowd::waitUntilManaged(const std::vector<Placed>& placed) {
    // Each window is looked at until it is where it asked to be, and never again after.
    std::size_t ready = 0;
    return test::waitUntil(
        [&] {
            while (ready < placed.size()) {
                const Placed& next = placed[ready];
                const std::optional<Rect> frame = probe_.frameGeometry(next.window);
                if (!probe_.isManaged(next.window) || !frame || frame->x != next.x ||
                    frame->y != next.y) {
                    return false;
                }
                ++ready;
            }
            return true;
        },
        std::chrono::duration_cast<std::chrono::milliseconds>(kManageTimeout));
}

std::vector<Rect> WindowCrowd::gridClearOf(const Rect& keepClear) const {
    auto root = xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, root_));
    if (!root) {
        return {};
    }
    // What a cell's windows cover at most: every round's shift, the decorations included.
    const int reachX = kCellWidth + (kRounds - 1) * kRoundShiftX;
    const int reachY = kCellHeight + (kRounds - 1) * kRoundShiftY;
    std::vector<Rect> cells;
    for (int y = kTopMargin; y + reachY <= root->height; y += kCellHeight) {
        for (int x = 0; x + reachX <= root->width; x += kCellWidth) {
            const Rect reach{static_cast<double>(x), static_cast<double>(y),
                             static_cast<double>(reachX), static_cast<double>(reachY)};
            if (!reach.intersects(keepClear)) {
                cells.push_back(reach);
            }
        }
    }
    return cells;
}

}  // namespace gf::bench
