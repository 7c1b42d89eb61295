// The status bar of a Linux desktop: items that speak the StatusNotifierItem protocol on the session bus.
// Main thread only; needs a running QApplication. Without a session bus items are made all the same, and shown nowhere.
//
//   LinuxStatusBar bar(bundle / "icons");
//   auto item = bar.makeStatusItem();
//   item->setImage("bell", "No sound yet");
//   item->setMenu(delegate);
//
// A click opens the item's menu in our own drawing where the desktop allows that; bars that draw menus themselves find
// it on the bus.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/status/status_notifier_item.h"
#include "platform/linux/status/user_gesture.h"
#include "platform/status_item.h"

namespace tollvane {

class LinuxStatusBar : public StatusBar {
 public:
  // `iconThemePath` is the directory that holds hicolor/ with our drawings: "icons" in the bundle.
  explicit LinuxStatusBar(std::filesystem::path iconThemePath);

  // Called on the main thread when the user clicks an item that was made after this, before its menu opens.
  void setActivateHandler(std::function<void(const StatusItemActivation&)> handler);

  std::unique_ptr<StatusItem> makeStatusItem() override;

  // Of the click that opened a menu, or chose an item of it: for whoever brings a window forward on the user's behalf.
  const UserGesture& lastGesture() const { return *gesture_; }

  // Its token, once: a token is good for one activation.
  std::string takeActivationToken();

 private:
  std::filesystem::path iconThemePath_;
  std::function<void(const StatusItemActivation&)> onActivate_;
  std::shared_ptr<UserGesture> gesture_ = std::make_shared<UserGesture>();  // with the items, which may live longer
};

}  // namespace tollvane
