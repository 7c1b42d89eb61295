#include "platform/linux/windows/switch_button.h"

#include <QPainter>
#include <QSignalBlocker>
#include <QStyle>
#include <algorithm>

namespace tollvane {
namespace {

constexpr int titleFlags = Qt::TextWordWrap | Qt::AlignVCenter;
constexpr int gapBeforeRail = 16;
constexpr int slowest = 150;  // milliseconds

}  // namespace

SwitchButton::SwitchButton(QWidget* parent) : QAbstractButton(parent) {
  setCheckable(true);
  setFocusPolicy(Qt::StrongFocus);
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  position_.setStartValue(0.0);
  position_.setEndValue(1.0);
  connect(&position_, &QVariantAnimation::valueChanged, this, [this] { update(); });
  // Not clicked(): accessibility tools turn it without a click.
  connect(this, &QAbstractButton::toggled, this, [this](bool on) {
    slide();
    // What it does may change this very switch.
    if (const auto set = set_) set(on);
  });
}

void SwitchButton::setValue(const ui::Toggle& value) {
  set_ = value.set;
  const QString title = QString::fromStdString(value.title);
  if (accessibleName() != title) {
    setAccessibleName(title);
    updateGeometry();
    update();
  }
  if (isChecked() == value.isOn) return;
  const QSignalBlocker nobodysWish(this);
  setChecked(value.isOn);
  slide();
}

void SwitchButton::dress(const SettingsLook& look) {
  if (look_ == look) return;
  look_ = look;
  if (const QFont wanted = look.font({}); wanted != font()) setFont(wanted);
  update();
}

void SwitchButton::slide() {
  const int wanted = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this);
  position_.stop();
  position_.setDirection(isChecked() ? QAbstractAnimation::Forward : QAbstractAnimation::Backward);
  position_.setDuration(isVisible() ? std::min(wanted, slowest) : 0);
  position_.start();
  update();
}

int SwitchButton::lineHeight() const { return fontMetrics().height(); }

QSize SwitchButton::railSize() const {
  const int height = std::max(16, lineHeight() * 4 / 3) / 2 * 2;
  return {height * 9 / 5, height};
}

QRect SwitchButton::titleRect(int width) const {
  const QMargins around = contentsMargins();
  const int room = std::max(1, width - around.left() - around.right() - railSize().width() - gapBeforeRail);
  const QRect needed =
      fontMetrics().boundingRect(QRect(0, 0, room, QWIDGETSIZE_MAX), titleFlags & ~Qt::AlignVCenter, accessibleName());
  return {around.left(), around.top(), room, needed.height()};
}

int SwitchButton::heightForWidth(int width) const {
  const QMargins around = contentsMargins();
  return around.top() + std::max(titleRect(width).height(), railSize().height()) + around.bottom();
}

QSize SwitchButton::sizeHint() const {
  const QMargins around = contentsMargins();
  const int width = around.left() + fontMetrics().horizontalAdvance(accessibleName()) + gapBeforeRail +
                    railSize().width() + around.right();
  return {width, heightForWidth(width)};
}

QSize SwitchButton::minimumSizeHint() const { return {railSize().width() * 4, railSize().height()}; }

void SwitchButton::paintEvent(QPaintEvent*) {
  if (!look_) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) painter.setOpacity(0.5);

  QRect title = titleRect(width());
  title.setHeight(contentsRect().height());
  painter.setPen(look_->color(TextColor::label));
  painter.drawText(QStyle::visualRect(layoutDirection(), rect(), title),
                   titleFlags | static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft)),
                   accessibleName());

  QRect rail(QPoint(), railSize());
  rail.moveCenter(contentsRect().center());
  rail.moveRight(contentsRect().right());
  drawRail(painter, QStyle::visualRect(layoutDirection(), rect(), rail));
}

void SwitchButton::drawRail(QPainter& painter, const QRectF& rail) const {
  const bool on = isChecked();
  const double radius = rail.height() / 2;
  drawBox(painter, rail, radius, isDown() ? look_->rail(on).darker(112) : look_->rail(on), look_->railEdge(on));

  const double at =
      position_.state() == QAbstractAnimation::Running ? position_.currentValue().toDouble() : static_cast<double>(on);
  const double way = layoutDirection() == Qt::RightToLeft ? 1 - at : at;
  const double inset = std::max(2.0, rail.height() / 9);
  const double diameter = rail.height() - 2 * inset;
  const QRectF knob(rail.left() + inset + way * (rail.width() - 2 * inset - diameter), rail.top() + inset, diameter,
                    diameter);
  painter.setPen(on ? QPen(Qt::NoPen) : QPen(look_->railEdge(false), 1));
  painter.setBrush(look_->knob(on));
  painter.drawEllipse(knob);

  drawFocusRing(painter, *this, rail, radius, *look_);
}

}  // namespace tollvane
