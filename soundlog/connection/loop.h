// TollvaneLog's only event loop: GLib's default main context. The other files need to know no more about it than this.
// Main thread only. A Watch belongs to its creator. Once it is destroyed, which its own handler may do, the handler is
// not called again.
#pragma once

#include <glib.h>

#include <functional>
#include <utility>

#include "platform/clock.h"

namespace tollvane::soundlog {

class Watch {
 public:
  Watch() = default;
  explicit Watch(GSource* source) : source_(source) {}  // takes the reference over
  Watch(Watch&& other) noexcept : source_(std::exchange(other.source_, nullptr)) {}
  Watch& operator=(Watch&& other) noexcept {
    if (this != &other) {
      reset();
      source_ = std::exchange(other.source_, nullptr);
    }
    return *this;
  }
  ~Watch() { reset(); }

  void reset();

  // Whether the handler may still be called.
  bool active() const { return source_ && !g_source_is_destroyed(source_); }

 private:
  GSource* source_ = nullptr;
};

// Calls `handler` whenever one of `conditions` (G_IO_IN, ...) is true for `descriptor`; errors are always reported.
[[nodiscard]] Watch watchDescriptor(int descriptor, GIOCondition conditions, std::function<void(GIOCondition)> handler);

// Calls `handler` once. A `delay` of 0 means: after the current work.
[[nodiscard]] Watch callAfter(Duration delay, std::function<void()> handler);

}  // namespace tollvane::soundlog
