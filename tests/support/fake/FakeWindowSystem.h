#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "fake/FakeWindowSpec.h"
#include "fake/VirtualTimeline.h"
#include "fake/WindowWrite.h"
#include "platform/ApplicationRegistry.h"
#include "platform/WindowControl.h"
#include "platform/WindowServer.h"

namespace gf::test {

// The fake desktop's windows and applications: what the window server lists,
// the handles that change windows, and the running applications. Handles may
// be used from any thread, as the engine's background queue does.
class FakeWindowSystem final : public WindowServer,
                               public WindowControl,
                               public ApplicationRegistry {
  public:
    explicit FakeWindowSystem(VirtualTimeline& timeline);
    ~FakeWindowSystem() override;

    // WindowServer
    std::optional<WindowDescription> windowAt(Point point) override;
    std::vector<WindowDescription> onScreenWindows() override;

    // WindowControl
    std::optional<std::vector<std::shared_ptr<WindowHandle>>> windowsOfProcess(
        std::int32_t pid) override;
    std::optional<bool> applicationAttribute(std::int32_t pid, std::string_view name) override;
    bool setApplicationAttribute(std::int32_t pid, std::string_view name, bool value) override;

    // ApplicationRegistry
    std::vector<RunningApplication> runningApplications() override;
    std::optional<std::string> identifierOfProcess(std::int32_t pid) override;
    std::optional<ApplicationIcon> iconOfInstalledApplication(
        const std::string& identifier) override;
    bool activate(std::int32_t pid) override;

    // Test controls
    std::uint32_t addWindow(const FakeWindowSpec& spec);
    void removeWindow(std::uint32_t number);
    void setFrame(std::uint32_t number, Rect frame);
    Rect frameOf(std::uint32_t number) const;
    void setGeometryReadable(std::uint32_t number, bool position, bool size);
    std::vector<std::uint32_t> stackingOrder() const;
    std::vector<WindowWrite> writes() const;
    std::vector<AttributeWrite> attributeWrites() const;
    void clearWrites();
    void setWindowServerAvailable(bool available);
    void setWindowListingFails(std::int32_t pid, bool fails);
    void setApplicationAttributeValue(std::int32_t pid, const std::string& name,
                                      std::optional<bool> value);
    std::optional<bool> applicationAttributeValue(std::int32_t pid, const std::string& name) const;
    void addApplication(const RunningApplication& application);
    void installApplication(const std::string& identifier, const ApplicationIcon& icon);
    std::vector<std::int32_t> activatedPids() const;

    struct State;

  private:
    VirtualTimeline& timeline_;
    std::shared_ptr<State> state_;
};

}  // namespace gf::test
