// The user's own style, with the titles of our menu in it. The highlight, the separators, the arrow and the frame are
// drawn by the style that all other menus have. Main thread only.
#pragma once

#include <QColor>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOptionMenuItem>

#include "platform/text_style.h"

namespace tollvane {

class MenuEntry;
class MenuWidget;

// The colours of a menu, one for each role of its texts, from the palette of the user's desktop. They are readable on
// the menu's background, whatever the palette contains. Pure; callable from any thread.
class MenuColors {
 public:
  explicit MenuColors(const QPalette& palette);

  QColor of(TextColor role) const;
  QColor selected() const { return selected_; }  // for all texts of the entry under the pointer
  QColor disabled() const { return tertiary_; }

 private:
  QColor label_;
  QColor secondary_;
  QColor tertiary_;
  QColor accent_;
  QColor selected_;
};

class MenuStyle : public QProxyStyle {
 public:
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returned) const override;

  // The room on either side of the title.
  static int padding(const QFont& menuFont);

 private:
  bool separatorsVanish(const QPalette& palette) const;
  bool isUnderScroller(const QRect& row, const MenuWidget& menu) const;
  static void drawSeparator(const QStyleOption& option, QPainter& painter);
  void drawEntry(const MenuEntry& entry, const QStyleOptionMenuItem& option, QPainter& painter) const;
};

}  // namespace tollvane
