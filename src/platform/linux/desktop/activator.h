// Brings an application forward by the first way that leads there.
// Main thread only. Whoever makes the raisers keeps them alive.
#pragma once

#include <vector>

#include "platform/linux/desktop/window_raiser.h"
#include "support/liveness.h"

namespace tollvane {

class Activator : public WindowRaiser {
 public:
  // Tried in this order.
  explicit Activator(std::vector<WindowRaiser*> raisers) : raisers_(std::move(raisers)) {}

  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

 private:
  void tryFrom(std::size_t index, const ActivationTarget& target, Raised soFar, std::function<void(Raised)> done);

  std::vector<WindowRaiser*> raisers_;
  Liveness alive_;
};

}  // namespace tollvane
