// Brings windows forward on an X11 desktop, and on a Wayland desktop those that are drawn through its X server.
// The window manager is asked, not commanded: it un-minimises the window and switches to its workspace, or lets it ask
// for attention only. Main thread only; needs a QCoreApplication. Connects for the time of one activation.
// Sources: freedesktop.org, Extended Window Manager Hints 1.5; X Consortium, Inter-Client Communication Conventions.
#pragma once

#include <cstdint>

#include "platform/linux/workspace/window_raiser.h"

namespace tollvane {

class X11Raiser : public WindowRaiser {
 public:
  // Asks the environment at each question.
  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

  // The same for one window of this very program.
  void raiseOwn(std::uint32_t window, std::function<void(Raised)> done);
};

}  // namespace tollvane
