#pragma once

#include <memory>

#include "platform/TaskbarPresence.h"

namespace gf {

class X11TaskbarHint;

// Carries out the taskbar policy on the X display the toolkit uses.
class X11TaskbarPresence final : public TaskbarPresence {
  public:
    // nullptr (with a line on standard error) when the application does not
    // run on an X display.
    static std::unique_ptr<X11TaskbarPresence> forApplication();

    explicit X11TaskbarPresence(std::unique_ptr<X11TaskbarHint> hint);
    ~X11TaskbarPresence() override;

    void setListedInTaskbar(QWidget& window, bool listed) override;

  private:
    std::unique_ptr<X11TaskbarHint> hint_;
};

}  // namespace gf
