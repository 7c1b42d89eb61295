#include "platform/linux/windows/settings_look.h"

#include <QFontInfo>
#include <algorithm>
#include <cmath>

#include "platform/linux/drawing/contrast.h"
#include "platform/linux/drawing/symbols.h"

namespace tollvane {
namespace {

// No text is smaller than the desktop's own: who has chosen that size can read it, and perhaps nothing smaller. Colours
// tell the text styles apart.
double sizeOf(ui::TextStyle style) { return style == ui::TextStyle::title ? 1.6 : 1; }

}  // namespace

SettingsLook::SettingsLook(const QPalette& palette, const QFont& body) : body_(body) {
  const auto color = [&palette](QPalette::ColorRole role) { return palette.color(QPalette::Active, role).toRgb(); };
  window_ = color(QPalette::Window);
  const QColor ink = readable(color(QPalette::WindowText), {window_}, 7);
  const bool dark = window_.lightness() < ink.lightness();
  // Lighter than the window, if the difference can be seen.
  group_ = dark ? blend(ink, window_, 0.06) : blend(Qt::white, window_, 0.8);
  if (contrast(group_, window_) < 1.03) group_ = blend(ink, window_, 0.04);
  border_ = blend(ink, window_, dark ? 0.16 : 0.13);
  separator_ = blend(ink, group_, 0.10);

  const std::vector<QColor> behind{window_, group_};
  primary_ = readable(ink, behind, readableContrast);
  secondary_ = readable(blend(ink, group_, 0.66), behind, readableContrast);
  accent_ = readable(color(QPalette::Highlight), behind, readableContrast);
  green_ = readable(dark ? QColor(0x5fd07a) : QColor(0x1a7f37), behind, readableContrast);
  orange_ = readable(dark ? QColor(0xffa94d) : QColor(0xb35309), behind, readableContrast);

  railOn_ = readable(color(QPalette::Highlight), {group_}, visibleContrast);
  knobOn_ = contrast(Qt::white, railOn_) >= 2 ? QColor(Qt::white) : group_;
  railOff_ = blend(ink, group_, dark ? 0.16 : 0.10);
  railEdge_ = readable(blend(ink, group_, 0.45), {group_}, visibleContrast);
  thumb_ = readable(blend(ink, window_, 0.45), {window_}, visibleContrast);
  disabled_ = readable(blend(ink, group_, 0.45), behind, visibleContrast);
  knobOff_ = dark ? blend(ink, group_, 0.75) : QColor(Qt::white);
}

QFont SettingsLook::font(const ui::Text& text) const {
  QFont font = body_;
  // A desktop may give the size of its font in pixels.
  const double points = body_.pointSizeF() > 0 ? body_.pointSizeF() : QFontInfo(body_).pointSizeF();
  font.setPointSizeF(points * sizeOf(text.style));
  if (text.weight == FontWeight::semibold) font.setWeight(QFont::DemiBold);
  return font;
}

QColor SettingsLook::color(TextColor role) const {
  switch (role) {
    case TextColor::secondaryLabel:
      return secondary_;
    case TextColor::controlAccent:
      return accent_;
    case TextColor::green:
      return green_;
    case TextColor::orange:
      return orange_;
    default:
      return primary_;
  }
}

int SettingsLook::pixels(double size) const {
  return static_cast<int>(std::lround(QFontInfo(body_).pixelSize() * size / 13));
}

QRectF onDevicePixels(const QPainter& painter, const QRectF& area) {
  const QTransform toDevice = painter.deviceTransform();
  const QRectF device = toDevice.mapRect(area);
  const QPointF corner(std::round(device.left()), std::round(device.top()));
  const QPointF end(std::max(std::round(device.right()), corner.x() + 1),
                    std::max(std::round(device.bottom()), corner.y() + 1));
  return toDevice.inverted().mapRect(QRectF(corner, end));
}

void drawBox(QPainter& painter, const QRectF& area, double radius, const QColor& fill, const QColor& outline) {
  const double scale = painter.deviceTransform().m11();
  const double line = std::max(1.0, std::floor(scale)) / scale;
  painter.setPen(QPen(outline, line));
  painter.setBrush(fill);
  painter.drawRoundedRect(onDevicePixels(painter, area).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                          radius - line / 2, radius - line / 2);
}

void drawFocusRing(QPainter& painter, const QWidget& control, const QRectF& area, double radius,
                   const SettingsLook& look) {
  constexpr int room = ringRoom - 1;
  if (!control.hasFocus() || !control.window()->testAttribute(Qt::WA_KeyboardFocusChange)) return;
  painter.setPen(QPen(look.color(TextColor::controlAccent), 2));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(area.adjusted(-room, -room, room, room), radius + room, radius + room);
}

QIcon windowIcon(const QWidget& window) {
  const QColor ink = SettingsLook(window.palette(), window.font()).color(TextColor::controlAccent);
  QIcon bell;
  for (const int size : {16, 32, 48, 64}) bell.addPixmap(QPixmap::fromImage(drawSymbol("bell.fill", size, ink)));
  return QIcon::fromTheme(QStringLiteral("tollvane"), bell);
}

}  // namespace tollvane
