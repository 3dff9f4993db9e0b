#include "x11/WindowManagerSetup.h"

#include <fstream>
#include <ostream>

namespace gf::test {

namespace {

// No key or mouse bindings, margins or animations, one desktop.
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

// Alt + left drag moves, Alt + right drag resizes, from the first pixel: what the bench compares.
constexpr const char* kOpenboxDragBindings = R"(
    <dragThreshold>1</dragThreshold>
    <context name="Frame">
      <mousebind button="A-Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Left" action="Drag"><action name="Move"/></mousebind>
      <mousebind button="A-Right" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Right" action="Drag"><action name="Resize"/></mousebind>
    </context>
  )";

// Likewise, and no panel that would shrink the work area.
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

// Else fbsetbg, without a wallpaper setter, pops up a message box that takes the focus.
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
            // Elsewhere, a first start overwrites the -rc file with the system's defaults.
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
