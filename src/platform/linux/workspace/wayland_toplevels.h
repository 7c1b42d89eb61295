// Brings windows forward on Wayland compositors that let programs list windows and activate them (those made with
// wlroots, and others). They tell titles and application ids, and no processes: an application without a desktop entry
// is not found. Main thread only.
// Source: https://wayland.app/protocols/wlr-foreign-toplevel-management-unstable-v1
#pragma once

#include "platform/linux/workspace/window_raiser.h"

namespace tollvane {

class WaylandToplevels : public WindowRaiser {
 public:
  // Answers before it returns, after a few round trips to the compositor.
  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;
};

}  // namespace tollvane
