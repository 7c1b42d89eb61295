#include "platform/linux/windows/scroll_thumb.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <algorithm>
#include <utility>

namespace tollvane {

void ScrollThumb::dress(const SettingsLook& look) {
  if (std::exchange(color_, look.thumb()) != color_) update();
}

// The style decides where the thumb is, because it decides what a click reaches.
void ScrollThumb::paintEvent(QPaintEvent*) {
  constexpr int thickest = 7;
  QStyleOptionSlider option;
  initStyleOption(&option);
  QRectF thumb = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
  const double thickness = std::min<double>(thumb.width(), thickest);
  thumb = QRectF(thumb.center().x() - thickness / 2, thumb.top(), thickness, thumb.height()).adjusted(0, 2, 0, -2);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color_);
  painter.drawRoundedRect(onDevicePixels(painter, thumb), thickness / 2, thickness / 2);
}

void Hairline::setDrawn(bool drawn) {
  if (std::exchange(drawn_, drawn) != drawn) update();
}

void Hairline::dress(const SettingsLook& look) {
  if (std::exchange(color_, look.border()) != color_) update();
}

void Hairline::paintEvent(QPaintEvent*) {
  if (!drawn_) return;
  QPainter painter(this);
  painter.fillRect(onDevicePixels(painter, rect()), color_);
}

}  // namespace tollvane
