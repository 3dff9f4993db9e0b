// The engine on every desktop we serve: each case runs once per window manager
// (and with none), with real clients, and checks the frames the user sees.
#include <gtest/gtest.h>

#include <string>

#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

class WindowManagerMatrixTest : public X11DesktopTest,
                                public ::testing::WithParamInterface<WindowManager> {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1600, 1000, GetParam()}; }
};

TEST_P(WindowManagerMatrixTest, ClientsAppearWhereTheyAskedToBe) {
    const TestClient& logo = desktop().startXlogo(300, 200, 300, 200);
    const TestClient& terminal = desktop().startXterm(700, 400, 40, 10);
    EXPECT_EQ(probe().frameGeometry(logo.window)->origin(), (Point{300, 200}));
    EXPECT_EQ(probe().frameGeometry(terminal.window)->origin(), (Point{700, 400}));
}

INSTANTIATE_TEST_SUITE_P(EveryWindowManager, WindowManagerMatrixTest,
                         ::testing::ValuesIn(everyWindowManager()),
                         [](const auto& info) { return std::string(nameOf(info.param)); });

}  // namespace
}  // namespace gf::test
