#include "TrayIconFinder.h"

#include <vector>

#include "platform/x11/XcbReply.h"

namespace gf::bench {

namespace {

constexpr int kMaxDepth = 8;

}  // namespace

std::string classPart(const std::string& wmClass) {
    const std::size_t separator = wmClass.find('\0');
    if (separator == std::string::npos) {
        return {};
    }
    std::string part = wmClass.substr(separator + 1);
    if (const std::size_t end = part.find('\0'); end != std::string::npos) {
        part.resize(end);
    }
    return part;
}

std::optional<xcb_window_t> findViewableWindowOfClass(xcb_connection_t* c, xcb_window_t top,
                                                      const std::string& windowClass) {
    std::vector<xcb_window_t> level{top};
    for (int depth = 0; depth < kMaxDepth && !level.empty(); ++depth) {
        struct Cookies {
            xcb_get_window_attributes_cookie_t attributes;
            xcb_get_property_cookie_t wmClass;
            xcb_get_geometry_cookie_t geometry;
            xcb_query_tree_cookie_t tree;
        };
        std::vector<Cookies> cookies;
        cookies.reserve(level.size());
        for (xcb_window_t window : level) {
            cookies.push_back(
                {xcb_get_window_attributes(c, window),
                 xcb_get_property(c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64),
                 xcb_get_geometry(c, window), xcb_query_tree(c, window)});
        }
        std::optional<xcb_window_t> found;
        std::vector<xcb_window_t> next;
        for (std::size_t i = 0; i < level.size(); ++i) {
            auto attributes = xcbReply(c, xcb_get_window_attributes_reply, cookies[i].attributes);
            auto property = xcbReply(c, xcb_get_property_reply, cookies[i].wmClass);
            auto geometry = xcbReply(c, xcb_get_geometry_reply, cookies[i].geometry);
            auto tree = xcbReply(c, xcb_query_tree_reply, cookies[i].tree);
            if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) {
                continue;  // nothing below an unviewable window is viewable either
            }
            if (!found && property && property->format == 8 && geometry && geometry->width > 1) {
                const std::string value(
                    static_cast<const char*>(xcb_get_property_value(property.get())),
                    static_cast<std::size_t>(xcb_get_property_value_length(property.get())));
                if (classPart(value) == windowClass) {
                    found = level[i];
                }
            }
            if (tree) {
                const xcb_window_t* children = xcb_query_tree_children(tree.get());
                next.insert(next.end(), children,
                            children + xcb_query_tree_children_length(tree.get()));
            }
        }
        if (found) {
            return found;
        }
        level = std::move(next);
    }
    return std::nullopt;
}

}  // namespace gf::bench
