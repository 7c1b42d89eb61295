// The status bar of whatever desktop this is. The bell is a StatusNotifierItem as long as anything shows such items; on
// an X11 desktop where nothing does, it is an icon in the old system tray, until a host appears. Never both.
// Main thread only; needs a QApplication. Whoever makes the parts keeps them alive.
#pragma once

#include <QDBusConnection>
#include <functional>
#include <memory>

#include "platform/linux/bell/status_watcher.h"
#include "platform/main_queue.h"
#include "platform/status_item.h"
#include "support/liveness.h"

namespace tollvane {

class DesktopStatusBar : public StatusBar {
 public:
  // At login the panel may start after us, and a replaced panel comes back quickly: wait this long before deciding that
  // there is none.
  static constexpr std::chrono::seconds grace{5};

  // `modern` makes the items that hosts show.
  DesktopStatusBar(QDBusConnection bus, StatusBar& modern, MainQueue& queue);
  ~DesktopStatusBar() override;

  // One item at a time.
  std::unique_ptr<StatusItem> makeStatusItem() override;

  // Called once, when the grace has passed and nothing shows status items. A bell that is not seen then is still shown
  // as soon as something does.
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
  int decision_ = 0;  // the newest one that is waiting
  StatusHostWatch hosts_;
  Liveness alive_;
};

}  // namespace tollvane
