// The main queue: the one thread on which all of Tollvane's own work runs.
//
//   queue.post([this] { refresh(); });                        // from any thread
//   queue.after(1s, alive_.guard([this] { checkAgain(); }));  // does nothing if this object is gone by then
//   watch_ = queue.watchReadable(socket, [this] { readSome(); });
//   watch_.reset();  // ends the watching; only then close the socket
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

  // Runs `block` on the main thread after the current work and after everything posted before it. Callable from any
  // thread. A block that throws ends the process: blocks must handle their own failures.
  virtual void post(Block block) = 0;

  // Runs `block` on the main thread after `delay`, never earlier. Blocks that are due at the same time run in the order
  // in which they were scheduled. A block cannot be cancelled; instead, it holds its owner weakly (see
  // support/liveness.h). Main thread only.
  virtual void after(Duration delay, Block block) = 0;

  // Destroying this object ends the watching; its own block may do so.
  class Watch {
   public:
    Watch() = default;
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    virtual ~Watch() = default;
  };

  // Runs `block` on the main thread whenever `descriptor` can be read or has come to its end. The descriptor stays the
  // caller's, who destroys the watch before closing it. Main thread only.
  virtual std::unique_ptr<Watch> watchReadable(int descriptor, Block block) = 0;

  // Runs `block` on the main thread whenever `descriptor` has room for output, or will never have any more. The
  // descriptor stays the caller's, who destroys the watch before closing it. Main thread only.
  virtual std::unique_ptr<Watch> watchWritable(int descriptor, Block block) = 0;

  // Runs `block` on the main thread after entries of `directory` have appeared or gone, and after the directory itself
  // has gone, which ends the watching; one call may stand for several changes. Null if the directory cannot be watched.
  // Main thread only.
  virtual std::unique_ptr<Watch> watchDirectory(const std::filesystem::path& directory, Block block) = 0;
};

}  // namespace tollvane
