// The status bar of a Linux desktop: items that speak the StatusNotifierItem protocol on the session bus.
// Main thread only; needs a running QGuiApplication. Without a session bus items are made all the same, and shown
// nowhere.
//
//   LinuxStatusBar bar(bundle / "icons");
//   bar.setActivateHandler([&](const StatusItemActivation& click) { ... });
//   auto item = bar.makeStatusItem();
//   item->setImage("bell", "No sound yet");
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "platform/linux/status/status_notifier_item.h"
#include "platform/status_item.h"

namespace tollvane {

class LinuxStatusBar : public StatusBar {
 public:
  // `iconThemePath` is the directory that holds hicolor/ with our drawings: "icons" in the bundle.
  explicit LinuxStatusBar(std::filesystem::path iconThemePath);

  // Called on the main thread when the user clicks an item that was made after this.
  void setActivateHandler(std::function<void(const StatusItemActivation&)> handler);

  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  std::filesystem::path iconThemePath_;
  std::function<void(const StatusItemActivation&)> onActivate_;
};

}  // namespace tollvane
