// What tells that a form is longer than its window: a scroll bar without rail or arrows, and a line at the edge. Main
// thread only.
#pragma once

#include <QScrollBar>
#include <QWidget>

#include "platform/linux/windows/settings_look.h"

namespace tollvane {

class ScrollThumb : public QScrollBar, public Dressed {
 public:
  explicit ScrollThumb(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {}
  void dress(const SettingsLook& look) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor color_;
};

class Hairline : public QWidget, public Dressed {
 public:
  explicit Hairline(QWidget* parent) : QWidget(parent) { setFixedHeight(1); }

  void setDrawn(bool drawn);
  void dress(const SettingsLook& look) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  bool drawn_ = false;
  QColor color_;
};

}  // namespace tollvane
