// Asks an application to come forward by itself: over the session bus, if its entry says that it listens there, or by
// starting it once more. Only if its entry says that it has one window, which this shows; everything else could open
// something new. The last resort, for window systems that keep all windows to themselves. Main thread only; the
// launcher must outlive the object.
// Source: freedesktop.org, Desktop Entry 1.5 (D-Bus Activation, SingleMainWindow).
#pragma once

#include <QDBusConnection>

#include "platform/linux/workspace/activation_token.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/linux/workspace/window_raiser.h"
#include "support/liveness.h"

namespace tollvane {

class BusActivation : public WindowRaiser {
 public:
  BusActivation(QDBusConnection bus, Launcher& launcher, TokenSource tokens)
      : bus_(std::move(bus)), launcher_(launcher), tokens_(std::move(tokens)) {}

  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

 private:
  void startAgain(const ActivationTarget& target, std::function<void(Raised)> done);

  QDBusConnection bus_;
  Launcher& launcher_;
  TokenSource tokens_;
  Liveness alive_;
};

}  // namespace tollvane
