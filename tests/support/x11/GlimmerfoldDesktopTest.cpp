#include "x11/GlimmerfoldDesktopTest.h"

namespace gf::test {

X11Desktop::Options GlimmerfoldDesktopTest::desktopOptions() const {
    X11Desktop::Options options;
    options.trayHost = true;
    return options;
}

std::vector<std::string> GlimmerfoldDesktopTest::settings() const {
    // Most tests want the frame exactly where the pointer took it, not pulled to an edge nearby.
    return {"magneticsEnabled=false"};
}

void GlimmerfoldDesktopTest::SetUp() {
    if (!GlimmerfoldLauncher::sandboxWorks()) {
        GTEST_SKIP() << "the test sandbox cannot run here";
    }
    X11DesktopTest::SetUp();
    ASSERT_FALSE(HasFatalFailure());
    GlimmerfoldLauncher::Options options;
    options.sandboxed = true;
    options.settings = settings();
    glimmerfold_ = std::make_unique<GlimmerfoldLauncher>(desktop(), options);
    hands_ = std::make_unique<GestureHands>(desktop());
}

void GlimmerfoldDesktopTest::TearDown() {
    if (hands_) {
        hands_->release();
    }
    if (glimmerfold_) {
        EXPECT_EQ(glimmerfold_->sanitizerReports(), "");
    }
}

std::unique_ptr<ChildProcess> GlimmerfoldDesktopTest::launch(const std::string& outputName) {
    auto process = glimmerfold().launch(outputName);
    EXPECT_NE(process, nullptr) << glimmerfold().error();
    return process;
}

std::unique_ptr<ChildProcess> GlimmerfoldDesktopTest::start(const std::string& outputName,
                                                            std::chrono::milliseconds timeout) {
    const std::size_t tapsBefore = glimmerfold().eventTapsLogged();
    auto process = launch(outputName);
    EXPECT_TRUE(process && glimmerfold().waitForEventTaps(tapsBefore + 1, timeout))
        << "Glimmerfold did not start its event tap\n"
        << glimmerfold().output(outputName);
    return process;
}

}  // namespace gf::test
