// The windows on the user's X11 desktop that belong to processes of this computer.
// Sources: freedesktop.org, Extended Window Manager Hints 1.5; X Consortium, Inter-Client Communication Conventions.
// One thread at a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/process_table.h"

namespace tollvane {

struct X11Window {
  Pid pid = 0;
  std::string instance;  // the two halves of WM_CLASS, as bytes
  std::string windowClass;
};

class X11Windows {
 public:
  virtual ~X11Windows() = default;

  // The ordinary top-level windows (no dialogs, panels or desktops). Valid until the next call.
  virtual const std::vector<X11Window>& normalWindows() = 0;
};

// For programs that need no windows.
class NoX11Windows : public X11Windows {
 public:
  const std::vector<X11Window>& normalWindows() override { return none_; }

 private:
  std::vector<X11Window> none_;
};

// Asks the X server that DISPLAY names. The connection is made at the first question and kept; no events are asked for,
// so it never wakes the process. Without a server, or when the server went away, there are no windows, and the next
// question tries again. An answer is good for 100 ms. A server that does not answer within 250 ms is left alone for
// five seconds.
class XcbWindows : public X11Windows {
 public:
  explicit XcbWindows(const Clock& clock);
  ~XcbWindows() override;

  const std::vector<X11Window>& normalWindows() override;

 private:
  class Connection;

  const Clock& clock_;
  std::unique_ptr<Connection> connection_;
  std::vector<X11Window> windows_;
  Instant validUntil_ = Instant::min();
};

}  // namespace tollvane
