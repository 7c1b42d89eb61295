// The widgets that show the single controls of the settings window. Each is given new values again and again, and
// changes only what differs. Main thread only.
#pragma once

#include <QAbstractButton>
#include <QIcon>
#include <QLabel>
#include <functional>
#include <optional>

#include "platform/linux/windows/settings_look.h"

namespace tollvane {

// Wraps its text, which is always plain, whatever it contains.
class TextView : public QLabel, public Dressed {
 public:
  enum class Edge { leading, trailing };

  explicit TextView(QWidget* parent);
  void setValue(const ui::Text& value);
  void standAt(Edge edge);
  void dress(const SettingsLook& look) override;

 private:
  ui::Text value_;
};

class ImageView : public QWidget, public Dressed {
 public:
  explicit ImageView(QWidget* parent);
  void setValue(const ui::Image& value);
  void dress(const SettingsLook& look) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ui::Image value_;
  QColor ink_;
};

class DotView : public QWidget, public Dressed {
 public:
  explicit DotView(QWidget* parent);
  void setValue(const ui::Dot& value);
  void dress(const SettingsLook& look) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ui::Dot value_;
  QColor ink_;
};

// An application's icon as the desktop draws it; nothing if the desktop has none.
class IconView : public QWidget, public Dressed {
 public:
  explicit IconView(QWidget* parent);
  void setValue(const ui::ApplicationIcon& value);
  void dress(const SettingsLook& look) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ui::ApplicationIcon value_;
  QIcon icon_;
};

// Only the box; its title is for accessibility tools.
class CheckBoxView : public QAbstractButton, public Dressed {
 public:
  explicit CheckBoxView(QWidget* parent);
  void setValue(const ui::Toggle& value);
  void dress(const SettingsLook& look) override;
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::function<void(bool)> set_;
  std::optional<SettingsLook> look_;
};

// The Enter key presses it, wherever the keyboard is in the window.
class ButtonView : public QAbstractButton, public Dressed {
 public:
  explicit ButtonView(QWidget* parent);
  void setValue(const ui::Button& value);
  void dress(const SettingsLook& look) override;
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::function<void()> action_;
  std::optional<SettingsLook> look_;
};

// Gives `existing` the value if it is the right kind of widget; else makes a new child of `parent`.
template <typename View, typename Value>
QWidget* drawn(const Value& value, QWidget* existing, QWidget* parent) {
  auto* view = dynamic_cast<View*>(existing);
  if (view == nullptr) view = new View(parent);
  view->setValue(value);
  return view;
}

QWidget* drawn(const ui::Text& value, QWidget* existing, QWidget* parent);
QWidget* drawn(const ui::Image& value, QWidget* existing, QWidget* parent);
QWidget* drawn(const ui::ApplicationIcon& value, QWidget* existing, QWidget* parent);
QWidget* drawn(const ui::Dot& value, QWidget* existing, QWidget* parent);
QWidget* drawn(const ui::Toggle& value, QWidget* existing, QWidget* parent);
QWidget* drawn(const ui::Button& value, QWidget* existing, QWidget* parent);

}  // namespace tollvane
