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

#include "GlimmerfoldLauncher.h"
#include "x11/WaitUntil.h"

namespace {

using namespace std::chrono_literals;
using gf::Rect;
using gf::test::Keysym::altL;
using gf::test::Keysym::controlL;
using gf::test::Keysym::superL;

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
        desktop_ = gf::test::X11Desktop::start({}, &error);
        if (!desktop_) {
            std::cerr << "demo: cannot start the private X server: " << error << '\n';
            return 1;
        }
        std::filesystem::create_directories(output_);
        glimmerfold_ = std::make_unique<gf::test::GlimmerfoldLauncher>(*desktop_);
        glimmerfold_->startTrayHost();
        const std::string log = (output_ / "glimmerfold.log").string();
        process_ = glimmerfold_->launch(program_, log, &error);
        // Running once its tray icon is up.
        if (!process_ || !glimmerfold_->waitForTrayIcon() || !process_->isRunning()) {
            std::cerr << "demo: Glimmerfold did not come up (" << error << "); see " << log << '\n';
            return 1;
        }
        logo_ = desktop_->startXlogo(300, 250, 260, 200).window;
        shot("1-start");

        const bool moved = step("move", {controlL, superL}, 430, 350, 190, 110, [](Rect b, Rect a) {
            return a.x > b.x + 100 && a.y > b.y + 50 && a.width == b.width;
        });
        // The corner nearest the pointer follows: grab near the bottom right.
        const Rect afterMove = frame();
        const bool resized = step("resize", {controlL, altL}, afterMove.maxX() - 20,
                                  afterMove.maxY() - 20, 120, 90, [](Rect b, Rect a) {
                                      return a.width > b.width + 60 && a.height > b.height + 40 &&
                                             a.x == b.x && a.y == b.y;
                                  });
        // Carried to within a few pixels of the screen's left edge, it sticks to it.
        const Rect afterResize = frame();
        const bool snapped =
            step("snap", {controlL, superL}, afterResize.x + 60, afterResize.y + 60,
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
        if (!glimmerfold_->tray().saveScreenshot(path)) {
            std::cerr << "demo: could not save " << path << '\n';
        }
    }

    // Holds the keys with the pointer at (x, y) until the window reacts, carries it by (dx, dy),
    // lets go, and reports whether `worked` holds for the frames before and after.
    bool step(const std::string& name, std::initializer_list<std::uint32_t> keys, double x,
              double y, int dx, int dy, const std::function<bool(Rect, Rect)>& worked) {
        const Rect before = frame();
        const int px = static_cast<int>(x);
        const int py = static_cast<int>(y);
        const int nx = dx < 0 ? -3 : 3;
        const int ny = dy != 0 ? 3 : 0;
        glimmerfold_->beginGesture(keys, logo_, px, py, nx, ny);
        for (int i = 1; i <= 8; ++i) {
            desktop_->input().movePointerTo(px + dx * i / 8, py + dy * i / 8);
        }
        Rect after = frame();
        gf::test::waitUntil([&] { return worked(before, after = frame()); }, 3s);
        glimmerfold_->release(keys);
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
