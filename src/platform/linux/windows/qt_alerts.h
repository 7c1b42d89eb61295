// Alerts as message boxes in the style of the user's desktop. The texts are drawn as plain text; very long ones lose
// their middle. Main thread only; needs a QApplication.
#pragma once

#include <QPointer>
#include <cstddef>
#include <deque>
#include <functional>

#include "platform/application.h"

class QMessageBox;

namespace tollvane {

class QtAlerts : public Alerts {
 public:
  // `bringForward` is called with each alert as soon as it is on the screen.
  explicit QtAlerts(std::function<void(QMessageBox&)> bringForward = nullptr);
  ~QtAlerts() override;

  void show(const Alert& alert, std::function<void(std::size_t button)> answer) override;

 private:
  struct Waiting {
    Alert alert;
    std::function<void(std::size_t)> answer;
  };

  void showNext();
  void showNow(const Alert& alert, std::function<void(std::size_t)> answer);

  std::function<void(QMessageBox&)> bringForward_;
  std::deque<Waiting> waiting_;
  QPointer<QMessageBox> shown_;
};

}  // namespace tollvane
