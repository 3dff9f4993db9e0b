// Shows Glimmerfold at work without an X session of one's own: starts a
// private X server with openbox, a tray and an xlogo window, runs the built
// program there, moves, resizes and snaps the window with XTest as a user
// would, and saves a screenshot before and after each step.
//   glimmerfold_demo <path to glimmerfold> <output directory>

#include <sys/stat.h>

#include <QCoreApplication>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <optional>
#include <string>

#include "TrayProbe.h"
#include "x11/ChildProcess.h"
#include "x11/WaitUntil.h"
#include "x11/X11Desktop.h"

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
        tray_ = std::make_unique<gf::test::TrayProbe>(desktop_->connection(), desktop_->root());
        std::filesystem::create_directories(output_);
        startTrayHost();
        if (!startGlimmerfold()) {
            return 1;
        }
        logo_ = desktop_->startXlogo(300, 250, 260, 200).window;
        shot("1-start");

        const bool moved = step("move", {controlL, superL}, 430, 350, 190, 110, [](Rect b, Rect a) {
            return a.x > b.x + 100 && a.y > b.y + 50 && a.width == b.width;
        });
        const Rect afterMove = frame();
        // The corner nearest the pointer follows: grab near the bottom right.
        const bool resized = step("resize", {controlL, altL}, afterMove.x + afterMove.width - 20,
                                  afterMove.y + afterMove.height - 20, 120, 90, [](Rect b, Rect a) {
                                      return a.width > b.width + 60 && a.height > b.height + 40 &&
                                             a.x == b.x && a.y == b.y;
                                  });
        // Carried to within a few pixels of the screen's left edge, it sticks to it.
        const Rect afterResize = frame();
        const int grabX = static_cast<int>(afterResize.x) + 60;
        const int grabY = static_cast<int>(afterResize.y) + 60;
        const bool snapped =
            step("snap", {controlL, superL}, grabX, grabY, -(static_cast<int>(afterResize.x) - 4),
                 0, [](Rect, Rect a) { return a.x == 0; });

        ::kill(glimmerfold_->pid(), SIGTERM);
        const auto status = glimmerfold_->waitForExit(10s);
        std::cout << "demo: Glimmerfold exited with status " << (status ? *status : -1) << '\n';
        std::cout << "demo: screenshots are in " << output_.string() << '\n';
        return moved && resized && snapped && status == 0 ? 0 : 1;
    }

  private:
    void startTrayHost() {
        gf::test::ChildProcess::Options options;
        options.arguments = {"trayer",      "--edge",        "top",     "--align", "right",
                             "--widthtype", "pixel",         "--width", "120",     "--height",
                             "28",          "--SetDockType", "true"};
        options.environment = desktop_->clientEnvironment();
        std::string error;
        trayHost_ = gf::test::ChildProcess::start(options, &error);
        if (trayHost_) {
            gf::test::waitUntil([&] { return tray_->trayOwner().has_value(); }, 5s);
        }
    }

    bool startGlimmerfold() {
        const auto home = desktop_->directory() / "glimmerfold-home";
        std::filesystem::create_directories(home / "config/glimmerfold");
        std::filesystem::create_directories(home / "runtime");
        ::chmod((home / "runtime").c_str(), 0700);
        // A finished first-run guide, so the program starts working at once.
        std::ofstream(home / "config/glimmerfold/glimmerfold.conf") << "[General]\n"
                                                                       "hasCompletedSetup=true\n";
        gf::test::ChildProcess::Options options;
        options.arguments = {program_};
        options.environment = desktop_->clientEnvironment();
        options.environment.emplace_back("XDG_CONFIG_HOME", (home / "config").string());
        options.environment.emplace_back("XDG_RUNTIME_DIR", (home / "runtime").string());
        options.environment.emplace_back("XDG_CACHE_HOME", (home / "cache").string());
        options.outputFile = (output_ / "glimmerfold.log").string();
        std::string error;
        glimmerfold_ = gf::test::ChildProcess::start(options, &error);
        if (!glimmerfold_) {
            std::cerr << "demo: cannot start " << program_ << ": " << error << '\n';
            return false;
        }
        // Running once its tray icon (or, without a tray, its Settings window) is up.
        const bool up = gf::test::waitUntil(
            [&] { return tray_->findViewable("Glimmerfold").has_value(); }, 10s);
        if (!up || !glimmerfold_->isRunning()) {
            std::cerr << "demo: Glimmerfold did not come up; see " << options.outputFile << '\n';
            return false;
        }
        return true;
    }

    Rect frame() const { return *desktop_->probe().frameGeometry(logo_); }

    void shot(const std::string& name) {
        const auto path = output_ / (name + ".png");
        if (!tray_->saveScreenshot(path)) {
            std::cerr << "demo: could not save " << path << '\n';
        }
    }

    // Holds the keys with the pointer at (x, y), nudges it until the window
    // reacts (Glimmerfold sees the keys a moment after the server), carries it
    // by (dx, dy), lets go, and reports whether `worked` holds for the frames
    // before and after.
    bool step(const std::string& name, std::initializer_list<std::uint32_t> keys, double x,
              double y, int dx, int dy, const std::function<bool(Rect, Rect)>& worked) {
        auto& input = desktop_->input();
        const Rect before = frame();
        const int px = static_cast<int>(x);
        const int py = static_cast<int>(y);
        input.movePointerTo(px, py);
        for (const auto key : keys) {
            input.pressKey(key);
        }
        const int direction = dx < 0 ? -1 : 1;
        int nudged = 0;
        for (int n = 3; n <= 60 && frame() == before; n += 3) {
            nudged = n * direction;
            input.movePointerTo(px + nudged, py + (dy != 0 ? n : 0));
            gf::test::waitUntil([&] { return !(frame() == before); }, 300ms);
        }
        for (int i = 1; i <= 8; ++i) {
            input.movePointerTo(px + nudged + (dx - nudged) * i / 8, py + dy * i / 8);
        }
        Rect after = frame();
        gf::test::waitUntil([&] { return worked(before, after = frame()); }, 3s);
        for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
            input.releaseKey(*key);
        }
        input.sync();
        const bool ok = worked(before, after);
        std::cout << "demo: " << name << ": " << describe(before) << " -> " << describe(after)
                  << (ok ? "" : "  (not as expected)") << '\n';
        shot(std::to_string(++shots_ + 1) + "-after-" + name);
        return ok;
    }

    std::string program_;
    std::filesystem::path output_;
    std::unique_ptr<gf::test::X11Desktop> desktop_;
    std::unique_ptr<gf::test::TrayProbe> tray_;
    std::unique_ptr<gf::test::ChildProcess> trayHost_;
    std::unique_ptr<gf::test::ChildProcess> glimmerfold_;
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
    return Demo(argv[1], argv[2]).run();
}
