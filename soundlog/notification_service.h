// Which sounds are notifications' sounds, and whose notifications. Main thread only. Reads /proc through its arguments,
// which must outlive the objects.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "soundlog/makers/identity.h"
#include "soundlog/makers/maker.h"

namespace tollvane::soundlog {

// How long after a notification a sound of its service is its sound.
inline constexpr Duration notificationWindow = std::chrono::seconds(5);

// Tells whether a sound comes from a program that shows notifications on this desktop: the owner of
// org.freedesktop.Notifications on the session bus, or a program to which notifications were sent all the same.
// Source: systemd.unit(5) for the names of units.
class NotificationService {
 public:
  NotificationService(const ProcFs& processes, const Makers& makers) : processes_(processes), makers_(makers) {}

  // `pid`: absent while no program owns the name.
  void setOwner(std::optional<Pid> pid);

  // To be called if a notification was sent to this process, which need not own the name: some desktops have a helper
  // that owns it and passes all notifications on to the shell, which plays.
  void received(Pid receiver, Instant now);

  // Whether the sound comes from the service: from its process, from another process of its unit, or from a script that
  // it started for a notification. What else than the owner has received a notification plays for it only within
  // notificationWindow, because a shell has other sounds, too.
  bool plays(const Maker& maker, Instant now) const;

 private:
  const ProcFs& processes_;
  const Makers& makers_;
  std::optional<ProcessKey> owner_;
  std::string unit_;  // the control group that is the service's own; empty if it shares one
  std::vector<std::pair<ProcessKey, Instant>> receivers_;
};

// The notifications of late, and which of them a reader of our lines knows as the last one. Pure; one thread.
class RecentNotices {
 public:
  static constexpr std::size_t most = 64;

  // To be called if a notification of the application `identity` is presented.
  void presented(const Notice& notice, std::string identity, Instant now);

  // The application to present once more before the sound of `maker`, because the reader would credit the sound to
  // another one; absent if the reader would be right. Remembers that it is presented.
  std::optional<std::string> presentAgainFor(const Maker& maker, Instant now);

 private:
  struct Recent {
    std::string applicationName;
    std::string desktopEntry;
    std::string identity;
    Instant at;
  };

  std::optional<std::string> behind(const Maker& maker, Instant now) const;

  std::deque<Recent> notices_;  // the newest last
  std::string told_;            // the last one that the reader was told
};

}  // namespace tollvane::soundlog
