// A connection to the session bus (sd-bus), served by the event loop. Main thread only.
#pragma once

#include <glib.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <string>

#include "soundlog/connection/loop.h"

namespace tollvane::soundlog {

class BusConnection {
 public:
  enum class Role {
    ordinary,
    // Becomes a monitor once the owner asks for it. Never answers or sends anything by itself after that, because the
    // bus disconnects a monitor that sends.
    monitor,
  };
  using MessageHandler = std::function<void(sd_bus_message*)>;  // of a monitor: each message it sees

  // `closed` is called once, from the event loop, when the bus went away. Null when there is no bus to connect to.
  static std::unique_ptr<BusConnection> open(const std::string& address, Role role, MessageHandler message,
                                             std::function<void()> closed);
  ~BusConnection();

  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  sd_bus* get() const { return bus_; }

 private:
  struct Source;
  struct SourceFunctions;

  BusConnection(sd_bus* bus, Role role, MessageHandler message, std::function<void()> closed);
  void process();

  sd_bus* bus_;
  Role role_;
  MessageHandler message_;
  std::function<void()> closed_;
  Watch source_;
  Watch closing_;
};

// The owner of a method call that is under way, or of a match: dropping it means that its handler is not called.
struct SlotDeleter {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using BusSlot = std::unique_ptr<sd_bus_slot, SlotDeleter>;

}  // namespace tollvane::soundlog
