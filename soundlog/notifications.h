// Listens on the session bus: which application shows a notification, which process is the notification service, and
// which other processes receive notifications. Main thread only. Uses two connections, because the one that sees other
// programs' calls may not make calls itself. Sources, both of freedesktop.org: Desktop Notifications (Notify, its
// hints); D-Bus (BecomeMonitor, NameOwnerChanged, GetConnectionUnixProcessID).
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
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
    // An application has shown a notification. Not called again if a service passes it on.
    std::function<void(const Notice&, std::optional<Pid> sender)> presented;
    std::function<void(std::optional<Pid>)> serviceChanged;  // process of the service; absent if none exists
    std::function<void(Pid)> received;  // a notification was sent to this process, which is not the service
    std::function<void()> served;
    std::function<void(bool served)> ended;
  };

  NotificationSource(std::string address, Events events);
  ~NotificationSource();

  // Begins to connect, unless there is a connection already. False if there is no bus.
  bool connect();
  void disconnect();

  // Whether the bus is being asked for a process, so that an event about a notification that was seen already is still
  // to come.
  bool isAsking() const { return !questions_.empty(); }

 private:
  struct Question;

  // A notification of late, and the bus name that it was sent to.
  struct Delivery {
    std::string applicationName;
    std::string desktopEntry;
    std::string receiver;
    Instant at;
  };

  bool becomeMonitor();
  bool followService();
  void called(sd_bus_message* call);
  bool isPassedOn(const Notice& notice, std::string_view sender) const;
  void remember(const Notice& notice, std::string receiver);
  void ask(const std::string& name, std::function<void(std::optional<Pid>)> answered);
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
  std::string owner_;  // unique name of the service
  std::deque<Delivery> deliveries_;
  bool served_ = false;
};

}  // namespace tollvane::soundlog
