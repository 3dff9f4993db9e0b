#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "x11/ChildProcess.h"

namespace gf::test {

// The window managers the desktop can run, each configured so that it grabs
// no keys of its own and places windows exactly where they ask to be.
enum class WindowManager {
    none,
    openbox,
    xfwm4,             // compositor off: decorations only
    xfwm4Compositing,  // compositor on: GTK draws its own decorations and shadows
    icewm,
    fluxbox,
};
const char* nameOf(WindowManager windowManager);
// Names it where GoogleTest prints a parameter (test lists, failures).
void PrintTo(WindowManager windowManager, std::ostream* stream);
// Every window manager above, none included, for suites that run on each.
const std::vector<WindowManager>& everyWindowManager();

// How to start the window manager on a display whose clients get `environment`: its settings and
// caches are written to `directory`, its output goes to window-manager.log there. With
// `dragBindings`, openbox keeps its usual Alt + left drag move and Alt + right drag resize.
ChildProcess::Options windowManagerProcess(
    WindowManager windowManager, const std::filesystem::path& directory,
    const std::vector<std::pair<std::string, std::string>>& environment, bool dragBindings = false);

}  // namespace gf::test
