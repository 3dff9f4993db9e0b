#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "x11/ChildProcess.h"

namespace gf::test {

// Each configured to grab no keys and to place windows exactly where they ask to be.
enum class WindowManager {
    none,
    openbox,
    xfwm4,             // compositor off: decorations only
    xfwm4Compositing,  // compositor on: GTK draws its own decorations and shadows
    icewm,
    fluxbox,
};
const char* nameOf(WindowManager windowManager);
void PrintTo(WindowManager windowManager, std::ostream* stream);
const std::vector<WindowManager>& everyWindowManager();

// Settings, caches and log go to `directory`; `dragBindings` keeps openbox's Alt + drag.
ChildProcess::Options windowManagerProcess(
    WindowManager windowManager, const std::filesystem::path& directory,
    const std::vector<std::pair<std::string, std::string>>& environment, bool dragBindings = false);

}  // namespace gf::test
