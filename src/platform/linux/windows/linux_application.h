// The running program on a Linux desktop. Main thread only; needs a QApplication.
#pragma once

#include "platform/application.h"
#include "platform/linux/workspace/activation_token.h"
#include "platform/linux/workspace/x11_raiser.h"

class QWidget;

namespace tollvane {

class LinuxApplication : public Application {
 public:
  explicit LinuxApplication(TokenSource tokens) : tokens_(std::move(tokens)) {}

  void activateIgnoringOtherApps() override;
  void terminate() override;

  // Brings one of the program's own windows forward, which is shown or is about to be. This object must exist as long
  // as the event loop runs.
  void bringForward(QWidget& window);

 private:
  void useToken();
  void bringForwardNow(QWidget& window);

  TokenSource tokens_;
  X11Raiser x11_;
};

}  // namespace tollvane
