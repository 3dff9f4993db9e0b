// Shows Glimmerfold at work without an X session of one's own: starts a
// private X server with openbox, a tray and an xlogo window, runs the built
// program there, moves, resizes and snaps the window with XTest as a user
// would, and saves a screenshot before and after each step.
//   glimmerfold_demo <glimmerfold, or a script that execs it> <output directory>

#include <QCoreApplication>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>

#include "x11/GestureHands.h"
#include "x11/GlimmerfoldLauncher.h"
#include "x11/ScreenGrab.h"
#include "x11/WaitUntil.h"
#include "x11/X11Desktop.h"

namespace {

using namespace std::chrono_literals;
using gf::Rect;
using gf::test::GestureKind;

std::string describe(const Rect& r) {
    return std::to_string(static_cast<int>(r.x)) + "," + std::to_string(static_cast<int>(r.y)) +
           " " + std::to_string(static_cast<int>(r.width)) + "x" +
           std::to_string(static_cast<int>(r.height));
}

class Demo {
  public:
    Demo(std::string program, std::filesystem::path output)
        : program_(std::move(program)), output_(std::move(output)) {}

    int run() {
        std::string error;
        gf::test::X11Desktop::Options options;
        options.trayHost = true;
        desktop_ = gf::test::X11Desktop::start(options, &error);
        if (!desktop_) {
            std::cerr << "demo: cannot start the private X server: " << error << '\n';
            return 1;
        }
        std::filesystem::create_directories(output_);
        gf::test::GlimmerfoldLauncher::Options launch;
        launch.program = program_;
        glimmerfold_ = std::make_unique<gf::test::GlimmerfoldLauncher>(*desktop_, launch);
        hands_ = std::make_unique<gf::test::GestureHands>(*desktop_);
        const std::string log = (output_ / "glimmerfold.log").string();
        process_ = glimmerfold_->launch(log);
        // Running once its tray icon is up.
        if (!process_ || !desktop_->trayHost().waitForIcon() || !process_->isRunning()) {
            std::cerr << "demo: Glimmerfold did not come up (" << glimmerfold_->error() << "); see "
                      << log << '\n';
            return 1;
        }
        logo_ = desktop_->startXlogo(300, 250, 260, 200).window;
        shot("1-start");

        const bool moved = step("move", GestureKind::move, 430, 350, 190, 110, [](Rect b, Rect a) {
            return a.x > b.x + 100 && a.y > b.y + 50 && a.width == b.width;
        });
        // The corner nearest the pointer follows: grab near the bottom right.
        const Rect afterMove = frame();
        const bool resized = step("resize", GestureKind::resize, afterMove.maxX() - 20,
                                  afterMove.maxY() - 20, 120, 90, [](Rect b, Rect a) {
                                      return a.width > b.width + 60 && a.height > b.height + 40 &&
                                             a.x == b.x && a.y == b.y;
                                  });
        // Carried to within a few pixels of the screen's left edge, it sticks to it.
        const Rect afterResize = frame();
        const bool snapped =
            step("snap", GestureKind::move, afterResize.x + 60, afterResize.y + 60,
                 -(static_cast<int>(afterResize.x) - 4), 0, [](Rect, Rect a) { return a.x == 0; });

        ::kill(process_->pid(), SIGTERM);
        const auto status = process_->waitForExit(10s);
        std::cout << "demo: Glimmerfold exited with status " << (status ? *status : -1) << '\n';
        std::cout << "demo: screenshots are in " << output_.string() << '\n';
        return moved && resized && snapped && status == 0 ? 0 : 1;
    }

  private:
    Rect frame() const { return *desktop_->probe().frameGeometry(logo_); }

    void shot(const std::string& name) {
        const auto path = output_ / (name + ".png");
        const auto screen = gf::test::grabScreen(desktop_->connection(), desktop_->root());
        if (!screen || !gf::test::saveImage(*screen, path)) {
            std::cerr << "demo: could not save " << path << '\n';
        }
    }

    // Holds the keys with the pointer at (x, y) until the window reacts, takes the pointer (dx, dy)
    // from where the gesture measures from, lets go once the frame has settled, and reports
    // whether `worked` holds for the frames before and after.
    bool step(const std::string& name, GestureKind kind, double x, double y, int dx, int dy,
              const std::function<bool(Rect, Rect)>& worked) {
        const Rect before = frame();
        const int px = static_cast<int>(x);
        const int py = static_cast<int>(y);
        const gf::Point from =
            hands_->begin(kind, logo_, px, py, 10s, {dx < 0 ? -1.0 : 1.0, dy != 0 ? 1.0 : 0.0})
                .value_or(gf::Point{x, y});
        for (int i = 1; i <= 8; ++i) {
            desktop_->input().movePointerTo(static_cast<int>(from.x) + dx * i / 8,
                                            static_cast<int>(from.y) + dy * i / 8);
        }
        Rect after = frame();
        gf::test::waitUntil(
            [&] {
                const Rect now = frame();
                const bool settled = now == after;
                after = now;
                return settled && worked(before, after);
            },
            3s, 50ms);
        hands_->release();
        const bool ok = worked(before, after);
        std::cout << "demo: " << name << ": " << describe(before) << " -> " << describe(after)
                  << (ok ? "" : "  (not as expected)") << '\n';
        shot(std::to_string(++shots_ + 1) + "-after-" + name);
        return ok;
    }

    std::string program_;
    std::filesystem::path output_;
    std::unique_ptr<gf::test::X11Desktop> desktop_;
    std::unique_ptr<gf::test::GlimmerfoldLauncher> glimmerfold_;
    std::unique_ptr<gf::test::GestureHands> hands_;
    std::unique_ptr<gf::test::ChildProcess> process_;
    gf::test::WindowId logo_ = 0;
    int shots_ = 0;
};

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    if (argc != 3) {
        std::cerr << "usage: glimmerfold_demo <path to glimmerfold> <output directory>\n";
        return 2;
    }
    // A relative output directory means the caller's; the launcher would take it as one inside
    // the private desktop's temporary directory.
    return Demo(argv[1], std::filesystem::absolute(argv[2])).run();
}
