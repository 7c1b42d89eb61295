// Brings windows forward on GNOME, where only the shell itself can do it: through Tollvane's extension of the shell, if
// the user has it. Main thread only. Source: shell/gnome/body.js.
#pragma once

#include <QDBusConnection>

#include "platform/linux/workspace/window_raiser.h"
#include "support/liveness.h"

namespace tollvane {

class ShellWindows : public WindowRaiser {
 public:
  explicit ShellWindows(QDBusConnection bus) : bus_(std::move(bus)) {}

  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

 private:
  void activate(qulonglong id, const std::function<void(Raised)>& done);

  QDBusConnection bus_;
  Liveness alive_;
};

}  // namespace tollvane
