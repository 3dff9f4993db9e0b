#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "fake/FakeDesktop.h"

namespace gf::test {

// Shared with the handles, which may outlive the desktop and run on a background thread.
struct FakeDesktop::WindowTable {
    struct Entry {
        std::uint32_t number = 0;
        Window window;
        bool positionReadable = true;
        bool sizeReadable = true;
    };

    mutable std::mutex mutex;
    std::vector<Entry> windows;  // front to back
    std::uint32_t nextNumber = 100;
    std::map<std::int32_t, std::map<std::string, bool, std::less<>>> attributes;
    std::vector<Write> writes;
    std::vector<AttributeWrite> attributeWrites;
    std::uint64_t nextSequence = 1;
    Rect maximizedFrame;  // the primary display's usable area
    bool defersStateChanges = false;
    std::vector<std::pair<std::uint32_t, WindowState>> pendingStates;

    Entry* find(std::uint32_t number) {
        auto it = std::ranges::find(windows, number, &Entry::number);
        return it == windows.end() ? nullptr : &*it;
    }
    void record(std::uint32_t number, Write::Kind kind, Point point = {}, Size size = {}) {
        writes.push_back({number, kind, point, size, nextSequence++});
    }
    // Each axis maximized keeps its frame to come back to when let go.
    void applyState(Entry& entry, WindowState wanted);
    // Fails softly once its window is gone, like one to a vanished X window.
    static std::shared_ptr<WindowHandle> handleTo(std::weak_ptr<WindowTable> table,
                                                  const Entry& entry);
};

}  // namespace gf::test
