// Which application a notification comes from. Main thread only. Reads /proc; desktop entries only through the function
// that it is given.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "soundlog/makers/maker.h"

namespace tollvane::soundlog {

// What a call of Notify says about its application.
struct Notice {
  std::string applicationName = {};        // for display only: any text
  std::string desktopEntry = {};           // hint "desktop-entry"
  std::optional<Pid> declaredSender = {};  // hint "sender-pid"
};

class Identities {
 public:
  struct Application {
    std::string id;        // id of its desktop entry, without ".desktop"
    bool regular = false;  // whether the user knows it as an application
  };
  // Returns the application that runs as this process itself; absent if none exists.
  using Lookup = std::function<std::optional<Application>(Pid)>;

  Identities(const Makers& makers, Lookup lookup) : makers_(makers), lookup_(std::move(lookup)) {}

  // Returns the first of these that there is: the desktop entry that the application names; the application that one of
  // the senders belongs to; the name for display; a sender's program. `busSender`: the process that the bus knows as
  // the sender.
  std::string identify(const Notice& notice, std::optional<Pid> busSender) const;

 private:
  std::optional<std::string> applicationOf(const Maker& sender) const;

  const Makers& makers_;
  Lookup lookup_;
};

}  // namespace tollvane::soundlog
