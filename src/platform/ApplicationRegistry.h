#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/ApplicationIcon.h"
#include "platform/RunningApplication.h"

namespace gf {

// The applications running on the desktop. Called on the main thread.
class ApplicationRegistry {
public:
    virtual ~ApplicationRegistry() = default;

    virtual std::vector<RunningApplication> runningApplications() = 0;

    // The application identifier of a process; nullopt when it has none or is
    // no longer running.
    virtual std::optional<std::string> identifierOfProcess(std::int32_t pid) = 0;

    // The icon of an installed application, found by its identifier; nullopt
    // when no such application is installed.
    virtual std::optional<ApplicationIcon> iconOfInstalledApplication(const std::string& identifier) = 0;

    // Brings the application forward: its window becomes active and its other
    // windows are raised. False when no such process has windows.
    virtual bool activate(std::int32_t pid) = 0;
};

}  // namespace gf
