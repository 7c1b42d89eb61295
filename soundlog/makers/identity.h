// Which application does a notification come from? Main thread only; reads /proc, and desktop entries through what it
// is handed.
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
  bool playsItself = false;                // hint "suppress-sound"
};

class Identities {
 public:
  struct Application {
    std::string id;        // of its desktop entry, without ".desktop"
    bool regular = false;  // the user knows it as an application
  };
  // The application that runs as this very process.
  using Lookup = std::function<std::optional<Application>(Pid)>;

  Identities(const Makers& makers, Lookup lookup) : makers_(makers), lookup_(std::move(lookup)) {}

  // The application's own word where it is an id; else the application that one of the senders belongs to; else the
  // name for display; else a sender's program. `busSender` is the process that the bus knows as the sender.
  std::string identify(const Notice& notice, std::optional<Pid> busSender) const;

 private:
  std::optional<std::string> applicationOf(const Maker& sender) const;

  const Makers& makers_;
  Lookup lookup_;
};

}  // namespace tollvane::soundlog
