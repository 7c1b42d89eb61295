// The status bar of a Linux desktop: items that speak the StatusNotifierItem protocol on the session bus. Main thread
// only; needs a running QApplication. Without a session bus, items can be made, but are shown nowhere.
//
//   LinuxStatusBar bar(bundle / "icons");
//   auto item = bar.makeStatusItem();
//   item->setImage("bell", "No sound yet");
//   item->setMenu(delegate);
//
// A click opens the item's menu in our own drawing if the desktop allows that; bars that draw menus themselves find it
// on the bus.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/status_item.h"

namespace tollvane {

class LinuxStatusBar : public StatusBar {
 public:
  // `iconThemePath`: the directory that contains hicolor/ with our drawings, which is "icons" in the bundle.
  explicit LinuxStatusBar(std::filesystem::path iconThemePath);

  std::unique_ptr<StatusItem> makeStatusItem() override;

  // Returns the activation token of the click that opened a menu or chose an item of it, for the window that comes
  // forward because of that click. Only once, because a token is good for one window. Empty if the bar and the window
  // system gave none.
  std::string takeActivationToken();

 private:
  std::filesystem::path iconThemePath_;
  std::shared_ptr<std::string> token_ = std::make_shared<std::string>();  // the items have it too, and may live longer
};

}  // namespace tollvane
