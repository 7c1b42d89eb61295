// Brings windows forward on sway, through the socket that SWAYSOCK names. Wayland's own protocols hide whose window is
// whose; sway tells. Main thread only.
// Source: sway-ipc(7).
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/linux/workspace/window_raiser.h"
#include "support/liveness.h"

namespace tollvane {

class SwayIpc : public WindowRaiser {
 public:
  // Asks the environment at each question.
  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

 private:
  class Conversation;
};

// The id of the window that fits best in sway's tree of windows, as its answer to "get_tree" describes it; the one that
// was in front most lately, where several fit equally well. Absent when none belongs to the application, or when
// the answer cannot be read.
std::optional<std::int64_t> bestWindow(const QByteArray& tree, const ActivationTarget& target);

}  // namespace tollvane
