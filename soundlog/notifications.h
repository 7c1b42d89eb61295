// Listens on the session bus: which application shows a notification, and which program is the notification service.
// Main thread only. Uses two connections, because the one that sees other programs' calls may not ask anything.
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

// Reads the arguments of a call of Notify; absent when they are not as they should be. Pure but for the message's
// reading position.
std::optional<Notice> readNotice(sd_bus_message* call);

class NotificationSource {
 public:
  struct Events {
    std::function<void(const Notice&, std::optional<Pid> sender)> presented;
    std::function<void(std::optional<Pid>)> serviceChanged;  // the notification service's process
    std::function<void()> served;
    std::function<void(bool served)> ended;
  };

  NotificationSource(std::string address, Events events);
  ~NotificationSource();

  // Begins to connect, if there is no connection yet. False when there is no bus.
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

// The program that shows notifications on this desktop, as the owner of org.freedesktop.Notifications on the session
// bus: is it the one that plays?
// Source: systemd.unit(5) for the names of units.
class NotificationService {
 public:
  NotificationService(const ProcFs& processes, const Makers& makers) : processes_(processes), makers_(makers) {}

  // Absent: nobody shows notifications now.
  void setOwner(std::optional<Pid> pid);

  // The sound comes from the service: the process itself, another one of its unit, or a script it runs.
  bool plays(const Maker& maker) const;

 private:
  const ProcFs& processes_;
  const Makers& makers_;
  std::optional<ProcessKey> owner_;
  std::string unit_;  // the control group that is the service's own; empty when it has none
};

}  // namespace tollvane::soundlog
