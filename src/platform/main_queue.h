// The main queue: the one thread on which all of Tollvane's own work runs.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

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

  // Something that is being watched, until this object is destroyed, which its own block may do.
  class Watch {
   public:
    virtual ~Watch() = default;
  };

  // Runs `block` on the main thread whenever `descriptor` has something to be read, or has come to its end. The
  // descriptor stays the caller's, who destroys the watch before closing it. Main thread only.
  virtual std::unique_ptr<Watch> watchReadable(int descriptor, Block block) = 0;

  // Runs `block` on the main thread after entries of `directory` have appeared or gone; several changes may be told of
  // at once. Null when the directory cannot be watched. Main thread only.
  virtual std::unique_ptr<Watch> watchDirectory(const std::filesystem::path& directory, Block block) = 0;
};

}  // namespace tollvane
