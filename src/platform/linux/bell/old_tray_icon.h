// The bell in an X11 desktop's old system tray. Main thread only; needs a QApplication.
// Source: freedesktop.org, System Tray Protocol 0.3, as the toolkit speaks it.
#pragma once

#include <QSystemTrayIcon>
#include <functional>
#include <string_view>

namespace tollvane {

class OldTrayIcon {
 public:
  // Whether there is such a tray now. To be asked only while nothing shows StatusNotifierItems: the toolkit decides at
  // the first question, and for good, which of both it speaks.
  static bool isThere();

  explicit OldTrayIcon(std::function<void(QPoint)> onClick);

  void setImage(std::string_view symbolName);
  void setToolTip(std::string_view text);

 private:
  QSystemTrayIcon icon_;
};

}  // namespace tollvane
