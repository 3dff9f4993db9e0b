#include "platform/x11/X11DisplayService.h"

#include <xcb/randr.h>

#include <algorithm>

#include "platform/x11/X11WindowReader.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// RRGetMonitors appeared in RandR 1.5.
constexpr std::uint32_t kRandrMajor = 1;
constexpr std::uint32_t kRandrMinor = 5;

constexpr std::uint32_t kStrutPartialFields = 12;
constexpr std::uint32_t kStrutFields = 4;

Rect spanning(double minX, double minY, double maxX, double maxY) {
    return {minX, minY, std::max(0.0, maxX - minX), std::max(0.0, maxY - minY)};
}

}  // namespace

X11DisplayService::X11DisplayService(const XcbConnection& connection, const X11WindowReader& reader)
    : connection_(connection), reader_(reader) {
    if (connection_.hasExtension(&xcb_randr_id)) {
        xcb_connection_t* c = connection_.get();
        auto version = xcbReply(c, xcb_randr_query_version_reply,
                                xcb_randr_query_version(c, kRandrMajor, kRandrMinor));
        hasMonitors_ =
            version &&
            (version->major_version > kRandrMajor ||
             (version->major_version == kRandrMajor && version->minor_version >= kRandrMinor));
    }
}

std::vector<DisplayInfo> X11DisplayService::displays() {
    xcb_connection_t* c = connection_.get();
    // The root grows and shrinks with RandR; the size in the setup data is
    // the one from connection time.
    auto rootGeometry =
        xcbReply(c, xcb_get_geometry_reply, xcb_get_geometry(c, connection_.root()));
    if (!rootGeometry) {
        return {};
    }
    const Rect root{0, 0, static_cast<double>(rootGeometry->width),
                    static_cast<double>(rootGeometry->height)};

    const std::vector<Rect> monitors = monitorsPrimaryFirst(root);
    std::vector<ReservedArea> reserved = reservedAreas(root);
    // Without any strut to go by, the manager's work area is the last resort,
    // though it covers the whole desktop rather than one monitor.
    std::optional<Rect> work;
    if (reserved.empty()) {
        work = workArea();
    }

    std::vector<DisplayInfo> displays;
    displays.reserve(monitors.size());
    for (const Rect& monitor : monitors) {
        Rect usable = usablePart(monitor, reserved);
        if (work && work->intersects(monitor)) {
            usable = spanning(
                std::max(monitor.minX(), work->minX()), std::max(monitor.minY(), work->minY()),
                std::min(monitor.maxX(), work->maxX()), std::min(monitor.maxY(), work->maxY()));
        }
        displays.push_back({monitor, usable});
    }
    return displays;
}

std::vector<Rect> X11DisplayService::monitorsPrimaryFirst(const Rect& root) const {
    std::vector<Rect> monitors;
    if (hasMonitors_) {
        xcb_connection_t* c = connection_.get();
        auto reply = xcbReply(c, xcb_randr_get_monitors_reply,
                              xcb_randr_get_monitors(c, connection_.root(), 1));
        if (reply) {
            for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
                 xcb_randr_monitor_info_next(&it)) {
                const Rect monitor{static_cast<double>(it.data->x), static_cast<double>(it.data->y),
                                   static_cast<double>(it.data->width),
                                   static_cast<double>(it.data->height)};
                if (monitor.isEmpty()) {
                    continue;
                }
                if (it.data->primary != 0) {
                    monitors.insert(monitors.begin(), monitor);
                } else {
                    monitors.push_back(monitor);
                }
            }
        }
    }
    if (monitors.empty()) {
        monitors.push_back(root);
    }
    return monitors;
}

std::vector<X11DisplayService::ReservedArea> X11DisplayService::reservedAreas(
    const Rect& root) const {
    const auto stacked = reader_.stackedWindows();
    if (!stacked) {
        return {};
    }
    xcb_connection_t* c = connection_.get();
    const X11Atoms& atoms = connection_.atoms();
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> cookies;
    for (const StackedWindow& window : *stacked) {
        cookies.emplace_back(xcb_get_property(c, 0, window.client, atoms.netWmStrutPartial,
                                              XCB_ATOM_CARDINAL, 0, kStrutPartialFields),
                             xcb_get_property(c, 0, window.client, atoms.netWmStrut,
                                              XCB_ATOM_CARDINAL, 0, kStrutFields));
    }
    std::vector<ReservedArea> reserved;
    using Edge = ReservedArea::Edge;
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        auto partial = xcbReply(c, xcb_get_property_reply, cookies[i].first);
        auto plain = xcbReply(c, xcb_get_property_reply, cookies[i].second);
        auto valuesOf = [](const XcbPointer<xcb_get_property_reply_t>& reply, std::size_t wanted) {
            std::vector<double> values;
            if (reply && reply->format == 32 &&
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) >=
                    wanted * 4) {
                const auto* data =
                    static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
                values.assign(data, data + wanted);
            }
            return values;
        };
        std::vector<double> s = valuesOf(partial, kStrutPartialFields);
        if (s.empty()) {
            // An old-style strut names no span along its edge; take the dock's
            // own extent, so that a panel on one monitor leaves the others alone.
            const std::vector<double> edges = valuesOf(plain, kStrutFields);
            const std::optional<Rect> frame =
                edges.empty() ? std::nullopt : reader_.outerFrame((*stacked)[i].client);
            if (!frame) {
                continue;
            }
            s = {edges[0],      edges[1],          edges[2],      edges[3],
                 frame->minY(), frame->maxY() - 1, frame->minY(), frame->maxY() - 1,
                 frame->minX(), frame->maxX() - 1, frame->minX(), frame->maxX() - 1};
        }
        // Struts measure from the edges of the root; start and end are inclusive.
        if (s[0] > 0) {
            reserved.push_back({Edge::left, spanning(0, s[4], s[0], s[5] + 1)});
        }
        if (s[1] > 0) {
            reserved.push_back(
                {Edge::right, spanning(root.maxX() - s[1], s[6], root.maxX(), s[7] + 1)});
        }
        if (s[2] > 0) {
            reserved.push_back({Edge::top, spanning(s[8], 0, s[9] + 1, s[2])});
        }
        if (s[3] > 0) {
            reserved.push_back(
                {Edge::bottom, spanning(s[10], root.maxY() - s[3], s[11] + 1, root.maxY())});
        }
    }
    return reserved;
}

bool X11DisplayService::limits(const ReservedArea& part, const Rect& monitor) {
    if (!part.area.intersects(monitor)) {
        return false;
    }
    // Struts measure from the root's edges, so a dock on the edge between two monitors reserves
    // a band right across its neighbour too: a band only limits the monitor its inner edge is in.
    switch (part.edge) {
        case ReservedArea::Edge::left:
            return part.area.maxX() < monitor.maxX();
        case ReservedArea::Edge::right:
            return part.area.minX() > monitor.minX();
        case ReservedArea::Edge::top:
            return part.area.maxY() < monitor.maxY();
        case ReservedArea::Edge::bottom:
            return part.area.minY() > monitor.minY();
    }
    return false;
}

Rect X11DisplayService::usablePart(const Rect& monitor, const std::vector<ReservedArea>& reserved) {
    double minX = monitor.minX(), minY = monitor.minY(), maxX = monitor.maxX(),
           maxY = monitor.maxY();
    for (const ReservedArea& part : reserved) {
        if (!limits(part, monitor)) {
            continue;
        }
        switch (part.edge) {
            case ReservedArea::Edge::left:
                minX = std::max(minX, part.area.maxX());
                break;
            case ReservedArea::Edge::right:
                maxX = std::min(maxX, part.area.minX());
                break;
            case ReservedArea::Edge::top:
                minY = std::max(minY, part.area.maxY());
                break;
            case ReservedArea::Edge::bottom:
                maxY = std::min(maxY, part.area.minY());
                break;
        }
    }
    return spanning(minX, minY, maxX, maxY);
}

std::optional<Rect> X11DisplayService::workArea() const {
    const X11Atoms& atoms = connection_.atoms();
    const std::vector<std::uint32_t> desktop =
        reader_.cardinalsOf(connection_.root(), atoms.netCurrentDesktop, 1);
    const std::size_t index = desktop.empty() ? 0 : desktop.front();
    const std::vector<std::uint32_t> areas = reader_.cardinalsOf(
        connection_.root(), atoms.netWorkarea, static_cast<std::uint32_t>(4 * (index + 1)));
    if (areas.size() < 4 * (index + 1)) {
        return std::nullopt;
    }
    const std::uint32_t* area = areas.data() + 4 * index;
    const Rect work{static_cast<double>(static_cast<std::int32_t>(area[0])),
                    static_cast<double>(static_cast<std::int32_t>(area[1])),
                    static_cast<double>(area[2]), static_cast<double>(area[3])};
    if (work.isEmpty()) {
        return std::nullopt;
    }
    return work;
}

}  // namespace gf
