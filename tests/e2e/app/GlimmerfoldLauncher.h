#pragma once

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TrayProbe.h"
#include "x11/ChildProcess.h"

namespace gf::test {

// Glimmerfold on a private desktop as a user meets it: a tray host (trayer) at the top right,
// the program started with a home of its own (settings with setup completed, runtime directory,
// output in the desktop's directory), and keys held over a window.
class GlimmerfoldLauncher {
  public:
    explicit GlimmerfoldLauncher(X11Desktop& desktop);

    const TrayProbe& tray() const { return tray_; }
    // The settings file the program reads; it starts with setup completed.
    std::filesystem::path settingsFile() const;
    // Starts trayer and waits until it holds the tray; false when it does not.
    bool startTrayHost();
    using Environment = std::vector<std::pair<std::string, std::string>>;
    // Starts `program` with `arguments` and its output going to `outputName` (in the desktop's
    // directory unless absolute); nullptr with the reason in `error`.
    std::unique_ptr<ChildProcess> launch(const std::string& program, const std::string& outputName,
                                         std::string* error, const Environment& extra = {},
                                         const std::vector<std::string>& arguments = {});
    std::string output(const std::string& outputName) const;
    // Where Glimmerfold's tray icon shows, once it does within a few seconds.
    std::optional<Rect> waitForTrayIcon() const;

    // Holds `keys` with the pointer at (x, y) over the window and nudges the pointer by (dx, dy)
    // a step at a time until the window's frame changes, since Glimmerfold sees the keys a
    // moment after the server does (and magnetics may hold the window for a few pixels). For a
    // move, returns the pointer position the gesture measures from; nullopt when nothing moved.
    std::optional<Point> beginGesture(std::initializer_list<std::uint32_t> keys, WindowId window,
                                      int x, int y, int dx, int dy);
    void release(std::initializer_list<std::uint32_t> keys);

  private:
    X11Desktop& desktop_;
    TrayProbe tray_;
    std::filesystem::path home_;
    std::unique_ptr<ChildProcess> trayHost_;
};

}  // namespace gf::test
