// The look of the settings window on this desktop: its fonts and colours, made from the desktop's own font and palette.
// All texts have readableContrast with what is behind them, whatever the palette contains. A value; main thread only.
#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QWidget>

#include "platform/settings_window.h"

namespace tollvane {

class SettingsLook {
 public:
  SettingsLook(const QPalette& palette, const QFont& body);

  bool operator==(const SettingsLook&) const = default;

  QFont font(const ui::Text& text) const;
  QColor color(TextColor role) const;

  // Logical pixels of something as large as a font of this size, where the size of the body font counts as 13.
  int pixels(double size) const;

  // The box around a section's rows, on the window's own background.
  const QColor& group() const { return group_; }
  const QColor& border() const { return border_; }
  const QColor& separator() const { return separator_; }

  // The rail of a switch, and the knob that slides in it. A check box and a button have the same colours.
  const QColor& rail(bool on) const { return on ? railOn_ : railOff_; }
  const QColor& railEdge(bool on) const { return on ? railOn_ : railEdge_; }
  const QColor& thumb() const { return thumb_; }        // of a scroll bar, on the window's own background
  const QColor& disabled() const { return disabled_; }  // the text of a control that cannot be used
  const QColor& knob(bool on) const { return on ? knobOn_ : knobOff_; }

 private:
  QFont body_;
  QColor window_, group_, border_, separator_;
  QColor primary_, secondary_, accent_, green_, orange_;
  QColor railOn_, railOff_, railEdge_, knobOn_, knobOff_;
  QColor thumb_, disabled_;
};

// `area` with its edges moved to the nearest borders between the device's pixels, and never thinner than one of them:
// so a line is sharp at every scale.
QRectF onDevicePixels(const QPainter& painter, const QRectF& area);

// A rounded box whose outline lies within `area` and is sharp.
void drawBox(QPainter& painter, const QRectF& area, double radius, const QColor& fill, const QColor& outline);

// The room around a control for its ring: it is drawn outside of the control, inside of the widget.
inline constexpr int ringRoom = 4;

// Around a control that has the keyboard, for those who came with the keyboard.
void drawFocusRing(QPainter& painter, const QWidget& control, const QRectF& area, double radius,
                   const SettingsLook& look);

// A widget with the look of the window. dress() is called after each change of its value and of the look.
class Dressed {
 public:
  virtual ~Dressed() = default;
  virtual void dress(const SettingsLook& look) = 0;
};

// The bell in the look's accent colour, for a window of ours.
QIcon windowIcon(const QWidget& window);

}  // namespace tollvane
