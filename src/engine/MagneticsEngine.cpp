#include "engine/MagneticsEngine.h"

#include <cmath>

#include "model/Settings.h"

namespace gf::MagneticsEngine {

namespace {

void appendLines(SnapEdges& edges, const Rect& r) {
    edges.verticalEdges.push_back(r.minX());
    edges.verticalEdges.push_back(r.maxX());
    edges.horizontalEdges.push_back(r.minY());
    edges.horizontalEdges.push_back(r.maxY());
}

bool contributesLines(const WindowDescription& window, std::int32_t ownPid) {
    return window.layer == WindowLayer::normal && window.ownerPid && *window.ownerPid != ownPid &&
           window.bounds && window.bounds->width > 0 && window.bounds->height > 0;
}

double snapAxis(double start, double length, const std::vector<double>& lines, double threshold) {
    const double end = start + length;
    for (const double line : lines) {
        if (std::abs(start - line) < threshold) {
            return line;
        }
        if (std::abs(end - line) < threshold) {
            return line - length;
        }
    }
    return start;
}

}  // namespace

SnapEdges collectEdges(const Settings& settings, Platform& platform) {
    SnapEdges edges;
    edges.threshold = settings.snapThreshold();
    const bool screenEdges = settings.snapToScreenEdges();
    const bool usableEdges = settings.snapToDockAndMenuBar();
    if (screenEdges || usableEdges) {
        const auto displays = platform.displays.displays();
        if (screenEdges) {
            for (const auto& display : displays) {
                appendLines(edges, display.frame);
            }
        }
        if (usableEdges) {
            for (const auto& display : displays) {
                appendLines(edges, display.visibleFrame);
            }
        }
    }
    if (settings.snapToWindowEdges()) {
        for (const auto& window : platform.windowServer.onScreenWindows()) {
            if (contributesLines(window, platform.ownPid)) {
                appendLines(edges, *window.bounds);
            }
        }
    }
    return edges;
}

Point snap(Point origin, Size size, const SnapEdges& edges) {
    return {snapAxis(origin.x, size.width, edges.verticalEdges, edges.threshold),
            snapAxis(origin.y, size.height, edges.horizontalEdges, edges.threshold)};
}

}  // namespace gf::MagneticsEngine
