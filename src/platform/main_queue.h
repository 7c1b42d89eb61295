// The main queue: the one thread on which all of Tollvane's own work runs.
#pragma once

#include <functional>

#include "platform/clock.h"

namespace tollvane {

class MainQueue {
 public:
  using Block = std::function<void()>;

  virtual ~MainQueue() = default;

  // Runs `block` on the main thread once the current work is done, after everything posted before it.
  // Callable from any thread. A block that throws ends the process: blocks handle their own failures.
  virtual void post(Block block) = 0;

  // Runs `block` on the main thread when `delay` has passed, never earlier. Blocks that fall due together run in
  // the order in which they were scheduled. There is no way to cancel: a block holds its owner weakly instead
  // (see support/liveness.h). Main thread only.
  virtual void after(Duration delay, Block block) = 0;
};

}  // namespace tollvane
