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
    // Becomes a monitor when its owner asks the bus for that. From then on it sends nothing by itself, not even
    // replies, because the bus disconnects a monitor that sends.
    monitor,
  };
  using MessageHandler = std::function<void(sd_bus_message*)>;  // receives each message that a monitor sees

  // `closed` is called once, from the event loop, after the bus has gone away. Null if there is no bus to connect to.
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

// Owns a method call that is under way, or a match. Once it is destroyed, the handler is not called any more.
struct SlotDeleter {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using BusSlot = std::unique_ptr<sd_bus_slot, SlotDeleter>;

}  // namespace tollvane::soundlog
