// One way to bring another application's window in front of all others: the desktops have no common one.
// Main thread only.
#pragma once

#include <functional>

#include "platform/linux/desktop/activation_target.h"

namespace tollvane {

enum class Raised {
  yes,       // a window of the application came forward, or asks for attention where the desktop does not let it
  noWindow,  // this way sees every window there is, and none belongs to the application
  unknown,   // this way leads nowhere on this desktop
};

class WindowRaiser {
 public:
  virtual ~WindowRaiser() = default;

  // `done` is called once, perhaps before this returns; never after the raiser's end. Whoever has asked a second time
  // gets both answers.
  virtual void raise(const ActivationTarget& target, std::function<void(Raised)> done) = 0;
};

}  // namespace tollvane
