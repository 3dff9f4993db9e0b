#include "platform/x11/X11MotionFollower.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xinput.h>

#include <array>
#include <cerrno>
#include <cstdint>

#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// Raw events reach clients during other clients' grabs from XInput 2.1 on.
constexpr std::uint16_t kInputMajor = 2;
constexpr std::uint16_t kInputMinor = 2;
constexpr std::uint16_t kInputMinimumMinor = 1;

struct InputEventMask {
    xcb_input_event_mask_t header;
    std::uint32_t bits;
};

class FollowToken final : public MonitorToken {
  public:
    explicit FollowToken(std::function<void()> release) : release_(std::move(release)) {}
    ~FollowToken() override { release_(); }
    FollowToken(const FollowToken&) = delete;
    FollowToken& operator=(const FollowToken&) = delete;

  private:
    std::function<void()> release_;
};

bool hasRawEventsDuringGrabs(const XcbConnection& connection) {
    if (!connection.hasExtension(&xcb_input_id)) {
        return false;
    }
    xcb_connection_t* c = connection.get();
    auto reply = xcbReply(c, xcb_input_xi_query_version_reply,
                          xcb_input_xi_query_version(c, kInputMajor, kInputMinor));
    return reply &&
           (reply->major_version > kInputMajor ||
            (reply->major_version == kInputMajor && reply->minor_version >= kInputMinimumMinor));
}

}  // namespace

std::unique_ptr<X11MotionFollower> X11MotionFollower::create(
    std::unique_ptr<XcbConnection> connection) {
    if (!connection || !hasRawEventsDuringGrabs(*connection)) {
        return nullptr;
    }
    return std::make_unique<X11MotionFollower>(std::move(connection));
}

X11MotionFollower::X11MotionFollower(std::unique_ptr<XcbConnection> connection)
    : connection_(std::move(connection)),
      wakeFd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {}

X11MotionFollower::~X11MotionFollower() {
    stopping_ = true;
    wake();
    thread_.join();
    if (wakeFd_ >= 0) {
        close(wakeFd_);
    }
}

std::unique_ptr<MonitorToken> X11MotionFollower::follow(std::function<void()> moved) {
    std::uint64_t id = 0;
    {
        std::lock_guard lock(callbackMutex_);
        moved_ = std::move(moved);
        id = ++followerId_;
    }
    selectMotion(true);
    return std::make_unique<FollowToken>([this, id] { unfollow(id); });
}

void X11MotionFollower::unfollow(std::uint64_t id) {
    {
        // Waits for a call in progress, so that none runs after the token is gone.
        std::lock_guard lock(callbackMutex_);
        if (id != followerId_) {
            return;  // replaced meanwhile
        }
        moved_ = nullptr;
    }
    selectMotion(false);
}

void X11MotionFollower::selectMotion(bool wanted) {
    // Master devices only: every device as well would report each movement twice.
    InputEventMask mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                        wanted ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_MOTION} : 0u};
    xcb_input_xi_select_events(connection_->get(), connection_->root(), 1, &mask.header);
    connection_->flush();
}

void X11MotionFollower::run() {
    xcb_connection_t* c = connection_->get();
    while (!stopping_ && waitForEvents()) {
        bool moved = false;
        while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(c)}) {
            moved = moved || (event->response_type & 0x7f) == XCB_GE_GENERIC;
        }
        if (connection_->hasError()) {
            return;  // the main connection notices and reports it
        }
        if (moved) {
            std::lock_guard lock(callbackMutex_);
            if (moved_) {
                moved_();
            }
        }
    }
}

bool X11MotionFollower::waitForEvents() {
    std::array<pollfd, 2> fds{
        {{xcb_get_file_descriptor(connection_->get()), POLLIN, 0}, {wakeFd_, POLLIN, 0}}};
    while (poll(fds.data(), fds.size(), -1) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return (fds[0].revents & (POLLERR | POLLHUP)) == 0;
}

void X11MotionFollower::wake() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wakeFd_, &one, sizeof one);
}

}  // namespace gf
