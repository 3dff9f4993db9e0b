#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/MonitorToken.h"

namespace gf {

class XcbConnection;

// Tells a background thread that the pointer moved, as soon as the X server says so, without
// the main thread in between: a connection of its own hears XInput 2 raw motion (selected only
// while someone follows) and a thread of its own waits on it. Each run of motion events read
// together gives one call. Follow and unfollow on the main thread.
class X11MotionFollower {
  public:
    // Takes the connection over; nullptr when it lacks XInput 2.1.
    static std::unique_ptr<X11MotionFollower> create(std::unique_ptr<XcbConnection> connection);
    explicit X11MotionFollower(std::unique_ptr<XcbConnection> connection);
    ~X11MotionFollower();
    X11MotionFollower(const X11MotionFollower&) = delete;
    X11MotionFollower& operator=(const X11MotionFollower&) = delete;

    // Calls back on the follower's thread after each run of motion until the token goes; no
    // call runs once the token's destructor has returned. One follower at a time: a second
    // replaces the first.
    std::unique_ptr<MonitorToken> follow(std::function<void()> moved);

  private:
    void unfollow(std::uint64_t id);
    void selectMotion(bool wanted);
    void run();
    bool waitForEvents();
    void wake() const;

    std::unique_ptr<XcbConnection> connection_;
    int wakeFd_ = -1;  // an eventfd that ends the thread's wait
    std::atomic<bool> stopping_{false};
    std::mutex callbackMutex_;
    std::function<void()> moved_;
    std::uint64_t followerId_ = 0;
    std::thread thread_;
};

}  // namespace gf
