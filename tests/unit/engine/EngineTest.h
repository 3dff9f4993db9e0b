#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "fake/FakeDesktop.h"
#include "model/Settings.h"

namespace gf::test {

using namespace std::chrono_literals;

// What every engine part works with: settings in a file of their own, the fake desktop's platform.
class EngineTest : public ::testing::Test {
  protected:
    using Window = FakeDesktop::Window;

    // The pointer comes to rest at `p` for `d`, reporting `flags` or else the keys held.
    void restAt(Point p, std::chrono::milliseconds d, std::optional<std::uint64_t> flags = {}) {
        desktop.movePointer(p, flags);
        desktop.advance(d);
    }

    QTemporaryDir dir;
    Settings settings{dir.filePath("glimmerfold.conf")};
    FakeDesktop desktop;
    Platform platform = desktop.platform();
};

}  // namespace gf::test
