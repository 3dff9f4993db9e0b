#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace gf {

// What an installed application's desktop entry says about it.
struct DesktopEntry {
    std::string id;              // file name without ".desktop"
    std::string name;            // localized when a translation exists
    std::string icon;            // theme icon name or absolute path; may be empty
    std::string startupWmClass;  // the WM_CLASS class its windows carry; may be empty
};

// The desktop entries of installed applications, read from the standard
// directories. An entry in an earlier directory hides one with the same id in
// a later directory, as the desktop-entry rules ask.
class DesktopEntryIndex {
  public:
    // Reads every application entry below the given directories, in order.
    static DesktopEntryIndex load(const std::vector<std::filesystem::path>& directories);

    // $XDG_DATA_HOME/applications, then each of $XDG_DATA_DIRS/applications.
    static std::vector<std::filesystem::path> standardDirectories();

    // The entry for an application identifier (a WM_CLASS class): the one
    // whose StartupWMClass matches, else the one whose file name matches, both
    // ignoring case.
    std::optional<DesktopEntry> find(const std::string& identifier) const;

    const std::vector<DesktopEntry>& entries() const { return entries_; }

  private:
    std::vector<DesktopEntry> entries_;
};

}  // namespace gf
