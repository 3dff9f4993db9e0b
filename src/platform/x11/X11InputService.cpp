#include "platform/x11/X11InputService.h"

#include <xcb/xinput.h>

#include <algorithm>
#include <array>

#include "platform/x11/X11EventTap.h"
#include "platform/x11/X11ModifierFlags.h"
#include "platform/x11/X11PointerMonitorToken.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbXkb.h"

namespace gf {

namespace {

// Raw events reach clients during other clients' grabs from XInput 2.1 on.
constexpr std::uint16_t kInputMajor = 2;
constexpr std::uint16_t kInputMinor = 2;
constexpr std::uint16_t kInputMinimumMinor = 1;

constexpr std::uint16_t kKeyboardEvents =
    XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY;

// One entry of an XISelectEvents request: the header and a one-word mask.
struct InputEventMask {
    xcb_input_event_mask_t header;
    std::uint32_t bits;
};

}  // namespace

X11InputService::X11InputService(const XcbConnection& connection,
                                 const XcbConnection* samplingConnection,
                                 std::unique_ptr<X11MotionFollower> motionFollower)
    : connection_(connection),
      samplingConnection_(samplingConnection),
      cancelKey_(connection),
      crossings_(connection),
      motionFollower_(std::move(motionFollower)) {
    initializeExtensions();
}

X11InputService::~X11InputService() {
    taps_.clear();
    monitors_.clear();
    if (!connection_.hasError()) {
        updateSelections(false);
    }
}

void X11InputService::initializeExtensions() {
    xcb_connection_t* c = connection_.get();
    if (connection_.hasExtension(&xcb_xkb_id)) {
        auto reply =
            xcbReply(c, xcb_xkb_use_extension_reply,
                     xcb_xkb_use_extension(c, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION));
        if (reply && reply->supported != 0) {
            hasKeyboardExtension_ = true;
            keyboardEventBase_ = xcb_get_extension_data(c, &xcb_xkb_id)->first_event;
        }
    }
    if (connection_.hasExtension(&xcb_input_id)) {
        auto reply = xcbReply(c, xcb_input_xi_query_version_reply,
                              xcb_input_xi_query_version(c, kInputMajor, kInputMinor));
        if (reply &&
            (reply->major_version > kInputMajor ||
             (reply->major_version == kInputMajor && reply->minor_version >= kInputMinimumMinor))) {
            hasInputExtension_ = true;
            inputOpcode_ = xcb_get_extension_data(c, &xcb_input_id)->major_opcode;
        }
    }
}

std::unique_ptr<EventTap> X11InputService::createEventTap(EventCallback callback) {
    if (!canObserveInput() || connection_.hasError()) {
        return nullptr;
    }
    const int id = nextId_++;
    auto tap = std::make_shared<Tap>();
    tap->callback = std::move(callback);
    taps_.emplace(id, std::move(tap));
    updateSelections(false);
    return std::make_unique<X11EventTap>(*this, id);
}

std::unique_ptr<MonitorToken> X11InputService::addPointerMovedMonitor(
    PointerMovedCallback callback) {
    if (connection_.hasError()) {
        return nullptr;
    }
    const int id = nextId_++;
    monitors_.emplace(id, std::make_shared<PointerMovedCallback>(std::move(callback)));
    updateSelections(false);
    return std::make_unique<X11PointerMonitorToken>(*this, id);
}

std::unique_ptr<MonitorToken> X11InputService::followPointerMotion(std::function<void()> moved) {
    if (!motionFollower_) {
        return nullptr;
    }
    return motionFollower_->follow(std::move(moved));
}

std::optional<Point> X11InputService::currentPointerPosition() {
    // Within a delivery the position read for it a moment ago is the current
    // one; reading it again would cost every pointer motion another round trip.
    if (pointerBeingDelivered_) {
        return pointerBeingDelivered_;
    }
    if (auto pointer = queryPointer()) {
        return pointer->location;
    }
    return std::nullopt;
}

std::optional<PointerSample> X11InputService::samplePointer() {
    if (samplingConnection_ == nullptr || samplingConnection_->hasError()) {
        return std::nullopt;
    }
    if (auto pointer = queryPointer(*samplingConnection_)) {
        return PointerSample{pointer->location, flagsFromModifierState(pointer->mask)};
    }
    return std::nullopt;
}

std::uint64_t X11InputService::currentModifierFlags() {
    xcb_connection_t* c = connection_.get();
    if (hasKeyboardExtension_) {
        if (auto state = xcbReply(c, xcb_xkb_get_state_reply,
                                  xcb_xkb_get_state(c, XCB_XKB_ID_USE_CORE_KBD))) {
            return flagsFromModifierState(state->mods);
        }
        return 0;
    }
    if (auto pointer = queryPointer()) {
        return flagsFromModifierState(pointer->mask);
    }
    return 0;
}

void X11InputService::setTapEnabled(int id, bool enabled) {
    auto found = taps_.find(id);
    if (found == taps_.end()) {
        return;
    }
    found->second->enabled = enabled;
    // Re-enabling after an interruption must re-establish the selections even
    // when this service believes they are still in place.
    updateSelections(enabled);
}

bool X11InputService::isTapEnabled(int id) const {
    auto found = taps_.find(id);
    return found != taps_.end() && found->second->enabled;
}

void X11InputService::setTapMotionWanted(int id, bool wanted) {
    auto found = taps_.find(id);
    if (found == taps_.end() || found->second->motionWanted == wanted) {
        return;
    }
    found->second->motionWanted = wanted;
    updateSelections(false);
}

void X11InputService::setTapCancelKeyCaptured(int id, bool captured) {
    auto found = taps_.find(id);
    if (found == taps_.end() || found->second->cancelKeyCaptured == captured) {
        return;
    }
    found->second->cancelKeyCaptured = captured;
    updateSelections(false);
}

void X11InputService::removeTap(int id) {
    if (taps_.erase(id) > 0) {
        updateSelections(false);
    }
}

void X11InputService::removeMonitor(int id) {
    if (monitors_.erase(id) > 0) {
        updateSelections(false);
    }
}

void X11InputService::updateSelections(bool force) {
    const bool anyTapEnabled = std::any_of(taps_.begin(), taps_.end(),
                                           [](const auto& entry) { return entry.second->enabled; });
    const bool motionWanted = std::any_of(taps_.begin(), taps_.end(), [](const auto& entry) {
        return entry.second->enabled && entry.second->motionWanted;
    });
    const bool cancelKeyWanted = std::any_of(taps_.begin(), taps_.end(), [](const auto& entry) {
        return entry.second->enabled && entry.second->cancelKeyCaptured;
    });
    // Monitors hear of modifier changes too: pressing the keys auto raise waits for counts as
    // much as crossing into a window.
    const bool keyboardWanted = anyTapEnabled || !monitors_.empty();
    if (monitors_.empty()) {
        crossings_.stop();
    } else {
        crossings_.start();
    }
    bool changed = false;
    if (hasKeyboardExtension_ && (force || keyboardWanted != keyboardSelected_)) {
        selectKeyboardEvents(keyboardWanted);
        keyboardSelected_ = keyboardWanted;
        deliveredKeyFlags_.reset();  // changes made while nobody listened went unreported
        changed = true;
    }
    if (hasInputExtension_ &&
        (force || motionWanted != motionSelected_ || anyTapEnabled != hierarchySelected_)) {
        selectInputEvents(motionWanted, anyTapEnabled);
        motionSelected_ = motionWanted;
        hierarchySelected_ = anyTapEnabled;
        changed = true;
    }
    // Grabbed again when forced: a new keyboard may put Escape on another key.
    if (cancelKey_.isGrabbed() && (!cancelKeyWanted || force)) {
        cancelKey_.release();
        changed = true;
    }
    if (cancelKeyWanted && !cancelKey_.isGrabbed()) {
        cancelKey_.grab();
        changed = true;
    }
    if (!motionSelected_) {
        motionPending_ = false;
    }
    if (changed) {
        connection_.flush();
    }
}

void X11InputService::selectKeyboardEvents(bool wanted) {
    xcb_xkb_select_events_details_t details{};
    details.affectNewKeyboard = XCB_XKB_NKN_DETAIL_KEYCODES;
    details.newKeyboardDetails = wanted ? XCB_XKB_NKN_DETAIL_KEYCODES : 0;
    // Only the effective modifiers: group or pointer-button changes would
    // wake the process for nothing.
    details.affectState = XCB_XKB_STATE_PART_MODIFIER_STATE;
    details.stateDetails = wanted ? XCB_XKB_STATE_PART_MODIFIER_STATE : 0;
    xcb_xkb_select_events_aux(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, kKeyboardEvents, 0, 0, 0,
                              0, &details);
}

void X11InputService::selectInputEvents(bool motion, bool hierarchy) {
    // Raw motion for the master devices only: selecting every device as well
    // would deliver each movement twice, once per slave and once per master.
    // Hierarchy changes are only reported for all devices.
    std::array<InputEventMask, 2> masks{{
        {{XCB_INPUT_DEVICE_ALL_MASTER, 1},
         motion ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_MOTION} : 0u},
        {{XCB_INPUT_DEVICE_ALL, 1},
         hierarchy ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_HIERARCHY} : 0u},
    }};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), masks.size(),
                               &masks[0].header);
}

std::optional<X11InputService::PointerState> X11InputService::queryPointer(
    const XcbConnection& connection) {
    xcb_connection_t* c = connection.get();
    auto reply = xcbReply(c, xcb_query_pointer_reply, xcb_query_pointer(c, connection.root()));
    if (!reply) {
        return std::nullopt;
    }
    return PointerState{{static_cast<double>(reply->root_x), static_cast<double>(reply->root_y)},
                        reply->mask};
}

void X11InputService::handleEvent(const xcb_generic_event_t& event) {
    if (auto crossing = crossings_.handleEvent(event)) {
        // Only where the pointer ended up matters: one delivery for a run of crossings.
        pendingCrossing_ = crossing;
        return;
    }
    const std::uint8_t type = event.response_type & 0x7f;
    if (type == XCB_KEY_PRESS) {
        deliverCancelKey(reinterpret_cast<const xcb_key_press_event_t&>(event));
        return;
    }
    if (hasKeyboardExtension_ && type == keyboardEventBase_) {
        const auto& keyboardEvent = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event);
        if (keyboardEvent.xkbType == XCB_XKB_STATE_NOTIFY) {
            // Keep the order the user produced: movement before this change.
            deliverPendingMotion();
            deliverFlagsChanged(keyboardEvent.mods);
        } else if (keyboardEvent.xkbType == XCB_XKB_NEW_KEYBOARD_NOTIFY) {
            // Sent whenever the user switches to another physical keyboard (or
            // XTest types), while the selection on the core keyboard stays in
            // place. Selecting again covers a keyboard that really is new
            // without interrupting the stream on every switch.
            updateSelections(true);
        }
        return;
    }
    if (hasInputExtension_ && type == XCB_GE_GENERIC) {
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if (generic.extension != inputOpcode_) {
            return;
        }
        if (generic.event_type == XCB_INPUT_RAW_MOTION) {
            // A raw event only says that the pointer moved; its valuators may be
            // relative or absolute depending on the device. The position is read
            // once the whole run of events has been taken in.
            motionPending_ = motionSelected_;
        } else if (generic.event_type == XCB_INPUT_HIERARCHY) {
            const auto& hierarchy = reinterpret_cast<const xcb_input_hierarchy_event_t&>(event);
            if ((hierarchy.flags & (XCB_INPUT_HIERARCHY_MASK_MASTER_ADDED |
                                    XCB_INPUT_HIERARCHY_MASK_MASTER_REMOVED)) != 0) {
                interruptTaps();
            }
        }
    }
}

void X11InputService::handleBatchEnd() {
    deliverPendingMotion();
    deliverPendingCrossing();
}

void X11InputService::deliverPendingMotion() {
    if (!motionPending_) {
        return;
    }
    motionPending_ = false;
    const std::optional<PointerState> pointer = queryPointer();
    if (!pointer) {
        return;
    }
    const std::uint64_t flags = flagsFromModifierState(pointer->mask);
    // Keys already changed on the server since the last change delivered: the pointer may have
    // moved on after that change too, and a gesture the change is about to end must not get there.
    if (deliveredKeyFlags_ && flags != *deliveredKeyFlags_) {
        return;
    }
    const InputEventType type = (pointer->mask & XCB_BUTTON_MASK_1) != 0
                                    ? InputEventType::leftMouseDragged
                                    : InputEventType::mouseMoved;
    const DeliveringPointer delivering(*this, pointer->location);
    deliverToTaps({type, flags, pointer->location}, true);
}

void X11InputService::deliverPendingCrossing() {
    if (!pendingCrossing_) {
        return;
    }
    const X11CrossingWatch::Crossing crossing = *pendingCrossing_;
    pendingCrossing_.reset();
    deliverToMonitors(crossing.location, crossing.state);
}

void X11InputService::deliverToMonitors(Point location, std::uint16_t state) {
    // A held button means a drag or a selection in progress, which no window should interrupt
    // by rising in front.
    constexpr std::uint16_t kAnyButton = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3 |
                                         XCB_BUTTON_MASK_4 | XCB_BUTTON_MASK_5;
    if (monitors_.empty() || (state & kAnyButton) != 0) {
        return;
    }
    const DeliveringPointer delivering(*this, location);
    const std::uint64_t flags = flagsFromModifierState(state);
    for (auto it = monitors_.begin(); it != monitors_.end();) {
        const int id = it->first;
        const std::shared_ptr<PointerMovedCallback> callback = it->second;
        (*callback)(flags);
        it = monitors_.upper_bound(id);
    }
}

void X11InputService::deliverFlagsChanged(std::uint8_t modifiers) {
    const std::optional<PointerState> pointer = queryPointer();
    const DeliveringPointer delivering(*this,
                                       pointer ? std::optional(pointer->location) : std::nullopt);
    deliveredKeyFlags_ = flagsFromModifierState(modifiers);
    deliverToTaps(
        {InputEventType::flagsChanged, *deliveredKeyFlags_, pointer ? pointer->location : Point{}},
        false);
    if (pointer) {
        // The buttons come from the pointer, the modifiers from the keyboard's own report.
        const auto buttons = static_cast<std::uint16_t>(pointer->mask & ~0xffu);
        deliverToMonitors(pointer->location, static_cast<std::uint16_t>(buttons | modifiers));
    }
}

// Only the grabbed key reaches us. It keeps coming while held after the grab is let go (until
// its release ends the grab the press began), and then no tap wants it any more.
void X11InputService::deliverCancelKey(const xcb_key_press_event_t& press) {
    if (!cancelKey_.isGrabbedKey(press.detail)) {
        return;
    }
    deliverPendingMotion();
    const Point location{static_cast<double>(press.root_x), static_cast<double>(press.root_y)};
    const DeliveringPointer delivering(*this, location);
    deliverToTaps({InputEventType::cancelKeyPressed, flagsFromModifierState(press.state), location},
                  false, true);
}

void X11InputService::interruptTaps() {
    std::vector<int> interrupted;
    for (auto& [id, tap] : taps_) {
        if (tap->enabled) {
            tap->enabled = false;
            interrupted.push_back(id);
        }
    }
    if (interrupted.empty()) {
        return;
    }
    updateSelections(false);
    const std::optional<PointerState> pointer = queryPointer();
    const InputEvent notice{InputEventType::tapDisabledByTimeout, 0,
                            pointer ? pointer->location : Point{}};
    for (int id : interrupted) {
        auto found = taps_.find(id);
        if (found != taps_.end()) {
            const std::shared_ptr<Tap> tap = found->second;
            tap->callback(notice);
        }
    }
}

void X11InputService::deliverToTaps(const InputEvent& event, bool motion, bool cancelKey) {
    // Walks by id rather than by iterator: a callback may add or remove taps.
    for (auto it = taps_.begin(); it != taps_.end();) {
        const int id = it->first;
        const std::shared_ptr<Tap> tap = it->second;
        if (tap->enabled && (!motion || tap->motionWanted) &&
            (!cancelKey || tap->cancelKeyCaptured)) {
            tap->callback(event);
        }
        it = taps_.upper_bound(id);
    }
}

}  // namespace gf
