// The status bar of any Linux desktop. The bell is a StatusNotifierItem as long as a host (such as a panel) shows such
// items. On an X11 desktop without a host, it is an icon in the old system tray, until a host appears. Never both. Main
// thread only; needs a QApplication. The constructor's arguments must outlive it.
#pragma once

#include <QDBusConnection>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/bell/shell_bell.h"
#include "platform/linux/bell/status_watcher.h"
#include "platform/main_queue.h"
#include "platform/status_item.h"
#include "support/liveness.h"

namespace tollvane {

class DesktopStatusBar : public StatusBar {
 public:
  // At login the panel may start after us, and a replaced panel comes back quickly: wait this long before deciding that
  // no panel exists.
  static constexpr std::chrono::seconds grace{5};

  // `modern` makes the StatusNotifierItems.
  DesktopStatusBar(QDBusConnection bus, StatusBar& modern, MainQueue& queue);
  ~DesktopStatusBar() override;

  // There can be only one item at a time.
  std::unique_ptr<StatusItem> makeStatusItem() override;

  // Opens the item's menu without a click, or closes it. False if there is no item, or if this desktop lets no program
  // open a menu.
  bool showMenu();

  // Called right before an item of a menu that showMenu() opened is chosen. `activationToken`: for the user's choice;
  // empty if the window system gives none.
  std::function<void(const std::string& activationToken)> onChoice;

  // Called once, if nothing shows status items when `grace` is over. The bell is still shown as soon as something does.
  std::function<void()> onNoStatusBar;

 private:
  class Item;
  class OldTrayIcon;

  void hostsChanged(bool hasHost);
  void decideAfterGrace();
  void decide();

  StatusBar& modern_;
  MainQueue& queue_;
  Item* item_ = nullptr;
  bool toldOfNone_ = false;
  int decision_ = 0;  // number of the newest one that is waiting; only that one counts
  ShellBell shell_;
  StatusHostWatch hosts_;
  Liveness alive_;
};

}  // namespace tollvane
