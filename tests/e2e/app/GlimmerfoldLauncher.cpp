#include "GlimmerfoldLauncher.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "x11/WaitUntil.h"

namespace gf::test {

using namespace std::chrono_literals;

GlimmerfoldLauncher::GlimmerfoldLauncher(X11Desktop& desktop)
    : desktop_(desktop), tray_(desktop), home_(desktop.directory() / "glimmerfold-home") {
    std::filesystem::create_directories(home_ / "config/glimmerfold");
    std::filesystem::create_directories(home_ / "runtime");
    ::chmod((home_ / "runtime").c_str(), 0700);
    std::ofstream(settingsFile()) << "[General]\n"
                                     "hasCompletedSetup=true\n";
}

std::filesystem::path GlimmerfoldLauncher::settingsFile() const {
    return home_ / "config/glimmerfold/glimmerfold.conf";
}

bool GlimmerfoldLauncher::startTrayHost() {
    ChildProcess::Options options;
    options.arguments = {"trayer",      "--edge",        "top",     "--align", "right",
                         "--widthtype", "pixel",         "--width", "120",     "--height",
                         "28",          "--SetDockType", "true"};
    options.environment = desktop_.clientEnvironment();
    options.outputFile = (desktop_.directory() / "trayer.log").string();
    std::string error;
    trayHost_ = ChildProcess::start(options, &error);
    return trayHost_ && waitUntil([&] { return tray_.trayOwner().has_value(); }, 10s);
}

std::unique_ptr<ChildProcess> GlimmerfoldLauncher::launch(
    const std::string& program, const std::string& outputName, std::string* error,
    const Environment& extra, const std::vector<std::string>& arguments) {
    ChildProcess::Options options;
    options.arguments = {program};
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.environment = desktop_.clientEnvironment();
    const std::pair<const char*, const char*> homes[] = {{"XDG_CONFIG_HOME", "config"},
                                                         {"XDG_RUNTIME_DIR", "runtime"},
                                                         {"XDG_CACHE_HOME", "cache"},
                                                         {"XDG_DATA_HOME", "data"}};
    for (const auto& [variable, folder] : homes) {
        options.environment.emplace_back(variable, (home_ / folder).string());
    }
    options.environment.insert(options.environment.end(), extra.begin(), extra.end());
    options.outputFile = (desktop_.directory() / outputName).string();
    return ChildProcess::start(options, error);
}

std::string GlimmerfoldLauncher::output(const std::string& outputName) const {
    std::ifstream in(desktop_.directory() / outputName);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::optional<Rect> GlimmerfoldLauncher::waitForTrayIcon() const {
    std::optional<WindowId> icon;
    if (!waitUntil([&] { return (icon = tray_.findViewable("Glimmerfold")).has_value(); }, 10s)) {
        return std::nullopt;
    }
    return tray_.rootGeometry(*icon);
}

std::optional<Point> GlimmerfoldLauncher::beginGesture(std::initializer_list<std::uint32_t> keys,
                                                       WindowId window, int x, int y, int dx,
                                                       int dy) {
    XTestDriver& input = desktop_.input();
    const Rect before = *desktop_.probe().frameGeometry(window);
    input.movePointerTo(x, y);
    for (const std::uint32_t key : keys) {
        input.pressKey(key);
    }
    for (int step = 1; step <= 20; ++step) {
        input.movePointerTo(x + dx * step, y + dy * step);
        std::optional<Rect> now;
        const bool changed = waitUntil(
            [&] {
                now = desktop_.probe().frameGeometry(window);
                return now && !(*now == before);
            },
            300ms);
        if (changed) {
            return Point{x + dx * step - (now->x - before.x), y + dy * step - (now->y - before.y)};
        }
    }
    return std::nullopt;
}

void GlimmerfoldLauncher::release(std::initializer_list<std::uint32_t> keys) {
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
        desktop_.input().releaseKey(*key);
    }
    desktop_.input().sync();
}

}  // namespace gf::test
