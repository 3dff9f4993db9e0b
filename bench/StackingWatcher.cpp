#include "StackingWatcher.h"

#include <algorithm>

#include "platform/x11/XcbReply.h"

namespace gf::bench {

struct StackingWatcher::Key {};

std::unique_ptr<StackingWatcher> StackingWatcher::open(const std::string& displayName,
                                                       std::string* error) {
    xcb_connection_t* connection = EventThread::connectWatching(
        displayName, 0, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, "the stacking watcher", error);
    if (connection == nullptr) {
        return nullptr;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    return std::make_unique<StackingWatcher>(Key{}, connection, root);
}

StackingWatcher::StackingWatcher(const Key&, xcb_connection_t* connection, xcb_window_t root)
    : connection_(connection), root_(root) {
    // Read after selecting, so a change in between is reported too; applying
    // it a second time changes nothing.
    if (auto tree =
            xcbReply(connection_, xcb_query_tree_reply, xcb_query_tree(connection_, root_))) {
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        bottomToTop_.assign(children, children + xcb_query_tree_children_length(tree.get()));
    }
    events_ = std::make_unique<EventThread>(
        connection_, [this](Clock::time_point arrived, const xcb_generic_event_t& event) {
            handle(arrived, event);
        });
}

StackingWatcher::~StackingWatcher() {
    events_.reset();
    xcb_disconnect(connection_);
}

bool StackingWatcher::expectAbove(xcb_window_t upper, xcb_window_t lower) {
    std::lock_guard lock(mutex_);
    upper_ = upper;
    lower_ = lower;
    cameAbove_.reset();
    return !isAbove(upper, lower);
}

std::optional<Clock::time_point> StackingWatcher::waitForAbove(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, timeout, [&] { return cameAbove_.has_value(); });
    return cameAbove_;
}

void StackingWatcher::handle(Clock::time_point arrived, const xcb_generic_event_t& event) {
    std::lock_guard lock(mutex_);
    switch (event.response_type & 0x7f) {
        case XCB_CREATE_NOTIFY: {
            const auto& created = reinterpret_cast<const xcb_create_notify_event_t&>(event);
            restack(created.window, std::nullopt);
            break;
        }
        case XCB_DESTROY_NOTIFY:
            remove(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
            break;
        case XCB_REPARENT_NOTIFY: {
            const auto& reparented = reinterpret_cast<const xcb_reparent_notify_event_t&>(event);
            if (reparented.parent == root_) {
                restack(reparented.window, std::nullopt);
            } else {
                remove(reparented.window);
            }
            break;
        }
        case XCB_CONFIGURE_NOTIFY: {
            const auto& configured = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            if (configured.event == root_) {
                restack(configured.window, configured.above_sibling);
            }
            break;
        }
        case XCB_CIRCULATE_NOTIFY: {
            const auto& circulated = reinterpret_cast<const xcb_circulate_notify_event_t&>(event);
            restack(circulated.window, circulated.place == XCB_PLACE_ON_TOP
                                           ? std::nullopt
                                           : std::optional<xcb_window_t>(XCB_WINDOW_NONE));
            break;
        }
        default:
            return;
    }
    if (!cameAbove_ && upper_ != XCB_WINDOW_NONE && isAbove(upper_, lower_)) {
        cameAbove_ = arrived;
        changed_.notify_all();
    }
}

// `above` is the sibling the window now lies directly on top of: none for the
// bottom of the stack, nullopt for its top.
void StackingWatcher::restack(xcb_window_t window, std::optional<xcb_window_t> above) {
    remove(window);
    if (!above) {
        bottomToTop_.push_back(window);
        return;
    }
    const auto sibling = std::find(bottomToTop_.begin(), bottomToTop_.end(), *above);
    bottomToTop_.insert(sibling == bottomToTop_.end() ? bottomToTop_.begin() : sibling + 1, window);
}

void StackingWatcher::remove(xcb_window_t window) {
    std::erase(bottomToTop_, window);
}

bool StackingWatcher::isAbove(xcb_window_t upper, xcb_window_t lower) const {
    const auto u = std::find(bottomToTop_.begin(), bottomToTop_.end(), upper);
    const auto l = std::find(bottomToTop_.begin(), bottomToTop_.end(), lower);
    return u != bottomToTop_.end() && l != bottomToTop_.end() && u > l;
}

}  // namespace gf::bench
