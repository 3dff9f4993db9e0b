#pragma once

#include <optional>
#include <vector>

#include "platform/DisplayService.h"
#include "platform/Rect.h"

namespace gf {

class XcbConnection;
class X11WindowReader;

// Monitors from RandR, read afresh on every call: virtual monitors change
// without any notification. Main thread only.
class X11DisplayService final : public DisplayService {
  public:
    X11DisplayService(const XcbConnection& connection, const X11WindowReader& reader);

    // Primary first. The usable rectangle of each is the monitor minus the
    // struts of the docks and panels along its edges.
    std::vector<DisplayInfo> displays() override;

  private:
    // Part of the root reserved by a dock along one edge of the screen.
    struct ReservedArea {
        enum class Edge { left, right, top, bottom };
        Edge edge;
        Rect area;
    };

    std::vector<Rect> monitorsPrimaryFirst(const Rect& root) const;
    std::vector<ReservedArea> reservedAreas(const Rect& root) const;
    std::optional<Rect> workArea() const;
    static bool limits(const ReservedArea& part, const Rect& monitor);
    static Rect usablePart(const Rect& monitor, const std::vector<ReservedArea>& reserved);

    const XcbConnection& connection_;
    const X11WindowReader& reader_;
    bool hasMonitors_ = false;
};

}  // namespace gf
