#include "x11/WindowManagerSetup.h"

#include <fstream>
#include <ostream>

namespace gf::test {

namespace {

// No key or mouse bindings, margins, animations, panels, snapping or resistance; one desktop.
const std::filesystem::path kConfigs(GLIMMERFOLD_WINDOW_MANAGER_CONFIGS);

}  // namespace

const char* nameOf(WindowManager windowManager) {
    static constexpr const char* kNames[] = {"none",  "openbox", "xfwm4", "xfwm4Compositing",
                                             "icewm", "fluxbox"};
    return kNames[static_cast<int>(windowManager)];
}

void PrintTo(WindowManager windowManager, std::ostream* stream) {
    *stream << nameOf(windowManager);
}

const std::vector<WindowManager>& everyWindowManager() {
    static const std::vector<WindowManager> all{
        WindowManager::openbox, WindowManager::xfwm4,   WindowManager::xfwm4Compositing,
        WindowManager::icewm,   WindowManager::fluxbox, WindowManager::none};
    return all;
}

ChildProcess::Options windowManagerProcess(
    WindowManager windowManager, const std::filesystem::path& directory,
    const std::vector<std::pair<std::string, std::string>>& environment, bool dragBindings) {
    ChildProcess::Options process;
    process.environment = environment;
    // Themes come from the system whatever a test points the variables at.
    process.environment.insert(process.environment.end(),
                               {{"HOME", directory.string()},
                                {"XDG_CONFIG_HOME", (directory / "config").string()},
                                {"XDG_CONFIG_DIRS", (directory / "config-dirs").string()},
                                {"XDG_CACHE_HOME", (directory / "cache").string()},
                                {"XDG_DATA_HOME", (directory / "data").string()},
                                {"XDG_DATA_DIRS", "/usr/local/share:/usr/share"}});
    process.outputFile = (directory / "window-manager.log").string();
    switch (windowManager) {
        case WindowManager::openbox: {
            const std::filesystem::path config = directory / "rc.xml";
            std::string text = fileText(kConfigs / "openbox-rc.xml");
            if (dragBindings) {  // Alt + drag from the first pixel, which the bench compares with
                text.insert(text.find("</mouse>"),
                            fileText(kConfigs / "openbox-drag-bindings.xml"));
            }
            std::ofstream(config) << text;
            process.arguments = {"openbox", "--config-file", config.string(), "--sm-disable"};
            break;
        }
        case WindowManager::xfwm4:
        case WindowManager::xfwm4Compositing:
            process.arguments = {
                "xfwm4", "--sm-client-disable",
                windowManager == WindowManager::xfwm4 ? "--compositor=off" : "--compositor=on"};
            break;
        case WindowManager::icewm:
            std::filesystem::copy(kConfigs / "icewm", directory / "icewm");
            process.environment.emplace_back("ICEWM_PRIVCFG", (directory / "icewm").string());
            process.arguments = {"icewm", "--config=" + (directory / "icewm/preferences").string()};
            break;
        case WindowManager::fluxbox:
            // Elsewhere, a first start overwrites the -rc file with the system's defaults; the
            // overlay unsets the wallpaper, as fbsetbg would show a message box that takes focus.
            std::filesystem::copy(kConfigs / "fluxbox", directory / ".fluxbox");
            process.arguments = {"fluxbox", "-rc", (directory / ".fluxbox/init").string()};
            break;
        case WindowManager::none:
            break;
    }
    return process;
}

}  // namespace gf::test
