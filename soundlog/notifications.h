// Listens on the session bus: which application shows a notification, and which process is the notification service.
// Main thread only. Uses two connections, because the one that sees other programs' calls may not make calls itself.
// Sources, both of freedesktop.org: Desktop Notifications (Notify, its hints); D-Bus (BecomeMonitor, NameOwnerChanged,
// GetConnectionUnixProcessID).
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "soundlog/connection/bus_connection.h"
#include "soundlog/makers/identity.h"
#include "soundlog/makers/maker.h"

namespace tollvane::soundlog {

// Reads the arguments of a call of Notify; absent if they are malformed. Pure, except that it moves the read position
// of `call`.
std::optional<Notice> readNotice(sd_bus_message* call);

class NotificationSource {
 public:
  struct Events {
    std::function<void(const Notice&, std::optional<Pid> sender)> presented;
    std::function<void(std::optional<Pid>)> serviceChanged;  // process of the service; absent if there is none
    std::function<void()> served;
    std::function<void(bool served)> ended;
  };

  NotificationSource(std::string address, Events events);
  ~NotificationSource();

  // Begins to connect, unless there is a connection already. False if there is no bus.
  bool connect();
  void disconnect();

 private:
  struct Question;

  bool becomeMonitor();
  bool followService();
  void called(sd_bus_message* call);
  void askSender(const char* sender, Notice notice);
  void serviceOwner(const char* owner);
  void closed();

  std::string address_;
  Events events_;
  std::unique_ptr<BusConnection> queries_;
  std::unique_ptr<BusConnection> monitor_;
  BusSlot monitoring_;
  BusSlot ownerChanges_;
  BusSlot ownerName_;
  BusSlot ownerPid_;
  std::list<Question> questions_;
  bool served_ = false;
};

// Tells whether a sound comes from the program that shows notifications on this desktop: the owner of
// org.freedesktop.Notifications on the session bus. Source: systemd.unit(5) for the names of units.
class NotificationService {
 public:
  NotificationService(const ProcFs& processes, const Makers& makers) : processes_(processes), makers_(makers) {}

  // `pid`: absent while no program shows notifications.
  void setOwner(std::optional<Pid> pid);

  // Whether the sound comes from the service: from its process, from another process of its unit, or from a script of
  // dunst.
  bool plays(const Maker& maker) const;

 private:
  const ProcFs& processes_;
  const Makers& makers_;
  std::optional<ProcessKey> owner_;
  std::string unit_;  // the control group that is the service's own; empty if it shares one
};

}  // namespace tollvane::soundlog
