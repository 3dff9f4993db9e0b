#include "x11/WindowManagerSetup.h"

#include <fstream>
#include <ostream>

namespace gf::test {

namespace {

// No key bindings (they would grab Super and friends), no mouse bindings unless asked, no margins,
// no animations, one desktop: windows land exactly where they are asked to.
constexpr const char* kOpenboxConfig = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <resistance><strength>0</strength><screen_edge_strength>0</screen_edge_strength></resistance>
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <theme><animateIconify>no</animateIconify></theme>
  <desktops><number>1</number></desktops>
  <margins><top>0</top><bottom>0</bottom><left>0</left><right>0</right></margins>
  <keyboard></keyboard>
  <mouse></mouse>
  <menu></menu>
  <applications></applications>
</openbox_config>
)";

// Openbox as most people run it for these two gestures: Alt + left button drag moves, Alt +
// right button drag resizes from the nearest corner, starting at the first pixel as
// Glimmerfold's gestures do. The bench compares Glimmerfold with them.
constexpr const char* kOpenboxDragBindings = R"(
    <dragThreshold>1</dragThreshold>
    <context name="Frame">
      <mousebind button="A-Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Left" action="Drag"><action name="Move"/></mousebind>
      <mousebind button="A-Right" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Right" action="Drag"><action name="Resize"/></mousebind>
    </context>
  )";

// The others, likewise: no task bar or toolbar (a panel would shrink the work
// area), no key bindings, no snapping or resistance of their own.
constexpr const char* kIcewmPreferences = R"(ShowTaskBar=0
Win95Keys=0
ModSuperIsCtrlAlt=0
ClickToFocus=1
FocusOnMap=1
EdgeSwitch=0
HorizontalEdgeSwitch=0
VerticalEdgeSwitch=0
SnapMove=0
SnapDistance=0
EdgeResistance=0
WorkspaceNames=" 1 "
)";

constexpr const char* kFluxboxInit = R"(session.screen0.toolbar.visible: false
session.screen0.slit.autoHide: true
session.screen0.workspaces: 1
session.screen0.edgeSnapThreshold: 0
session.screen0.focusModel: ClickFocus
session.screen0.windowPlacement: RowSmartPlacement
session.styleFile: /usr/share/fluxbox/styles/Emerge
session.configVersion: 13
)";

// Without a wallpaper setter installed, fluxbox's fbsetbg otherwise pops up a
// message box a few seconds after the start, over the windows and with the focus.
constexpr const char* kFluxboxOverlay = "background: unset\n";

}  // namespace

const char* nameOf(WindowManager windowManager) {
    switch (windowManager) {
        case WindowManager::none:
            return "none";
        case WindowManager::openbox:
            return "openbox";
        case WindowManager::xfwm4:
            return "xfwm4";
        case WindowManager::xfwm4Compositing:
            return "xfwm4Compositing";
        case WindowManager::icewm:
            return "icewm";
        case WindowManager::fluxbox:
            return "fluxbox";
    }
    return "unknown";
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
    // Each keeps its settings and caches in the desktop's directory; their
    // themes come from the system's data directories, whatever a test points
    // the variables at for its own purposes.
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
            std::string text = kOpenboxConfig;
            if (dragBindings) {
                text.insert(text.find("</mouse>"), kOpenboxDragBindings);
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
        case WindowManager::icewm: {
            const std::filesystem::path config = directory / "icewm";
            std::filesystem::create_directories(config);
            std::ofstream(config / "preferences") << kIcewmPreferences;
            process.environment.emplace_back("ICEWM_PRIVCFG", config.string());
            process.arguments = {"icewm", "--config=" + (config / "preferences").string()};
            break;
        }
        case WindowManager::fluxbox: {
            // In fluxbox's own directory: on a first start it overwrites the file given with
            // -rc by the system's defaults (toolbar, key bindings, wallpaper) unless it is there.
            const std::filesystem::path config = directory / ".fluxbox";
            std::filesystem::create_directories(config);
            std::ofstream(config / "keys");
            std::ofstream(config / "apps");
            std::ofstream(config / "overlay") << kFluxboxOverlay;
            std::ofstream(config / "init")
                << "session.keyFile: " << (config / "keys").string()
                << "\nsession.appsFile: " << (config / "apps").string()
                << "\nsession.styleOverlay: " << (config / "overlay").string() << "\n"
                << kFluxboxInit;
            process.arguments = {"fluxbox", "-rc", (config / "init").string()};
            break;
        }
        case WindowManager::none:
            break;
    }
    return process;
}

}  // namespace gf::test
