#include "platform/x11/X11ApplicationRegistry.h"

#include <algorithm>
#include <map>

#include "platform/x11/DesktopEntryIndex.h"
#include "platform/x11/X11WindowReader.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

constexpr std::uint32_t kSourceIndicationTool = 2;
constexpr std::uint32_t kMaxAtomsInList = 32;
// Icons larger than 1024 x 1024 would only cost memory.
constexpr std::uint32_t kMaxIconWords = 2 + 1024 * 1024;

std::vector<std::uint32_t> values32(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    const auto* data = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    return {data, data + xcb_get_property_value_length(reply) / 4};
}

}  // namespace

X11ApplicationRegistry::X11ApplicationRegistry(const XcbConnection& connection,
                                               const X11WindowReader& reader,
                                               DirectoryList desktopEntryDirectories)
    : connection_(connection),
      reader_(reader),
      desktopEntryDirectories_(std::move(desktopEntryDirectories)) {}

std::vector<X11ApplicationRegistry::WindowFacts> X11ApplicationRegistry::applicationWindowFacts()
    const {
    const std::vector<xcb_window_t> windows = reader_.stacking().applicationWindows();
    const std::vector<std::optional<std::int32_t>> pids = reader_.properties().ownerPids(windows);
    xcb_connection_t* c = connection_.get();
    const X11Atoms& atoms = connection_.atoms();
    struct Cookies {
        xcb_get_property_cookie_t types;
        xcb_get_property_cookie_t states;
    };
    std::vector<Cookies> cookies;
    cookies.reserve(windows.size());
    for (xcb_window_t window : windows) {
        cookies.push_back(
            {xcb_get_property(c, 0, window, atoms.netWmWindowType, XCB_ATOM_ATOM, 0,
                              kMaxAtomsInList),
             xcb_get_property(c, 0, window, atoms.netWmState, XCB_ATOM_ATOM, 0, kMaxAtomsInList)});
    }
    std::vector<WindowFacts> facts;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        auto types = xcbReply(c, xcb_get_property_reply, cookies[i].types);
        auto states = xcbReply(c, xcb_get_property_reply, cookies[i].states);
        if (!pids[i]) {
            continue;  // cannot be told apart from other processes
        }
        const std::vector<std::uint32_t> typeList = values32(types.get());
        const std::vector<std::uint32_t> stateList = values32(states.get());
        // A window without a type is a normal one, unless it is transient.
        const bool normalType = typeList.empty() || typeList.front() == atoms.netWmWindowTypeNormal;
        const bool skipsTaskbar = std::find(stateList.begin(), stateList.end(),
                                            atoms.netWmStateSkipTaskbar) != stateList.end();
        facts.push_back({windows[i], *pids[i], std::nullopt, normalType && !skipsTaskbar});
    }
    for (WindowFacts& fact : facts) {
        fact.windowClass = reader_.properties().windowClass(fact.window);
    }
    return facts;
}

std::vector<RunningApplication> X11ApplicationRegistry::runningApplications() {
    const std::vector<WindowFacts> facts = applicationWindowFacts();
    std::vector<RunningApplication> applications;
    std::map<std::int32_t, std::size_t> indexOfPid;
    std::map<std::int32_t, xcb_window_t> firstWindow;
    for (const WindowFacts& fact : facts) {
        auto [entry, inserted] = indexOfPid.emplace(fact.pid, applications.size());
        if (inserted) {
            applications.push_back({});
            applications.back().pid = fact.pid;
            firstWindow.emplace(fact.pid, fact.window);
        }
        RunningApplication& application = applications[entry->second];
        if (!application.identifier && fact.windowClass) {
            application.identifier = fact.windowClass;
        }
        application.isRegular = application.isRegular || fact.regular;
    }

    const DesktopEntryIndex index = DesktopEntryIndex::load(desktopEntryDirectories_());
    for (RunningApplication& application : applications) {
        std::optional<DesktopEntry> entry;
        if (application.identifier) {
            entry = index.find(*application.identifier);
        }
        if (entry && !entry->name.empty()) {
            application.displayName = entry->name;
        } else {
            application.displayName = application.identifier;
        }
        if (entry && !entry->icon.empty()) {
            application.icon.themeName = entry->icon;
        } else {
            application.icon = largestPublishedIcon(firstWindow[application.pid]);
        }
    }
    return applications;
}

ApplicationIcon X11ApplicationRegistry::largestPublishedIcon(xcb_window_t window) const {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply,
                          xcb_get_property(c, 0, window, connection_.atoms().netWmIcon,
                                           XCB_ATOM_CARDINAL, 0, kMaxIconWords));
    const std::vector<std::uint32_t> data = values32(reply.get());
    // The property holds images one after another: width, height, pixels.
    ApplicationIcon largest;
    std::size_t offset = 0;
    while (offset + 2 <= data.size()) {
        const std::uint64_t width = data[offset];
        const std::uint64_t height = data[offset + 1];
        const std::uint64_t pixels = width * height;
        if (width == 0 || height == 0 || offset + 2 + pixels > data.size()) {
            break;
        }
        if (pixels > static_cast<std::uint64_t>(largest.width) *
                         static_cast<std::uint64_t>(largest.height)) {
            largest.width = static_cast<int>(width);
            largest.height = static_cast<int>(height);
            largest.argb.assign(data.begin() + static_cast<std::ptrdiff_t>(offset + 2),
                                data.begin() + static_cast<std::ptrdiff_t>(offset + 2 + pixels));
        }
        offset += 2 + pixels;
    }
    return largest;
}

std::optional<std::string> X11ApplicationRegistry::identifierOfProcess(std::int32_t pid) {
    for (const WindowFacts& fact : applicationWindowFacts()) {
        if (fact.pid == pid && fact.windowClass) {
            return fact.windowClass;
        }
    }
    return std::nullopt;
}

std::optional<ApplicationIcon> X11ApplicationRegistry::iconOfInstalledApplication(
    const std::string& identifier) {
    const std::optional<DesktopEntry> entry =
        DesktopEntryIndex::load(desktopEntryDirectories_()).find(identifier);
    if (!entry) {
        return std::nullopt;
    }
    ApplicationIcon icon;
    icon.themeName = entry->icon;
    return icon;
}

bool X11ApplicationRegistry::activate(std::int32_t pid) {
    const std::vector<xcb_window_t> windows = reader_.stacking().applicationWindows();
    const std::vector<std::optional<std::int32_t>> pids = reader_.properties().ownerPids(windows);
    std::vector<xcb_window_t> owned;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (pids[i] == pid) {
            owned.push_back(windows[i]);
        }
    }
    if (owned.empty()) {
        return false;
    }
    // Visible windows front to back, in the true stacking order; the
    // frontmost becomes active, the others follow it forward.
    std::vector<xcb_window_t> visible;
    if (auto stacked = reader_.stacking().stackedWindows()) {
        for (const StackedWindow& window : *stacked) {
            if (std::find(owned.begin(), owned.end(), window.client) != owned.end()) {
                visible.push_back(window.client);
            }
        }
    }
    const xcb_window_t top = visible.empty() ? owned.front() : visible.front();
    if (!reader_.root().hasEwmhWindowManager()) {
        return activateDirectly(top, visible);
    }
    const X11Atoms& atoms = connection_.atoms();
    // Raised back to front first, so activation leaves the top one in front of them.
    for (auto it = visible.rbegin(); it != visible.rend(); ++it) {
        if (*it != top) {
            connection_.sendToWindowManager(
                *it, atoms.netRestackWindow,
                {kSourceIndicationTool, XCB_WINDOW_NONE, XCB_STACK_MODE_ABOVE, 0, 0});
        }
    }
    return connection_.sendToWindowManager(
        top, atoms.netActiveWindow,
        {kSourceIndicationTool, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
}

bool X11ApplicationRegistry::activateDirectly(xcb_window_t top,
                                              const std::vector<xcb_window_t>& visible) {
    // Nobody manages the windows: restack and focus them ourselves.
    xcb_connection_t* c = connection_.get();
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    for (auto it = visible.rbegin(); it != visible.rend(); ++it) {
        xcb_configure_window(c, *it, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    }
    xcb_configure_window(c, top, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    return xcbSucceeded(
        c, xcb_set_input_focus_checked(c, XCB_INPUT_FOCUS_PARENT, top, XCB_CURRENT_TIME));
}

}  // namespace gf
