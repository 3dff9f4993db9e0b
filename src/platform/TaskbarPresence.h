#pragma once

class QWidget;

namespace gf {

// Whether a top-level window of Glimmerfold is listed in the desktop's
// taskbar: the Linux counterpart of having an icon in the dock.
class TaskbarPresence {
  public:
    virtual ~TaskbarPresence() = default;
    virtual void setListedInTaskbar(QWidget& window, bool listed) = 0;
};

}  // namespace gf
