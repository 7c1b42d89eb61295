// The settings window in Qt Widgets, in the style of the user's desktop. Main thread only; needs a QApplication.
#pragma once

#include <functional>

#include "platform/settings_window.h"

class QWidget;

namespace tollvane {

class QtSettingsWindows : public SettingsWindows {
 public:
  // `bringForward` is called with the window each time that it has been shown; without it, Qt asks the desktop for it.
  explicit QtSettingsWindows(std::function<void(QWidget&)> bringForward = nullptr);

  std::unique_ptr<SettingsWindow> make(const SettingsWindow::Style& style) override;

 private:
  std::function<void(QWidget&)> bringForward_;
};

}  // namespace tollvane
