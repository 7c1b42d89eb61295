#include "platform/linux/windows/control_views.h"

#include <QPainter>
#include <QSignalBlocker>
#include <utility>

#include "platform/linux/drawing/plain_text.h"
#include "platform/linux/drawing/symbols.h"
#include "platform/linux/windows/switch_button.h"

namespace tollvane {
namespace {

// A limit is needed, because the system's own words may have any length.
constexpr qsizetype longestText = 1000;

QString plain(const std::string& text) { return breakable(shortenedInside(text, longestText)); }

// The room that a drawing leaves around itself, as a factor.
constexpr double roomAroundSymbols = 1.2;
constexpr double dotSize = 9;

// Some styles leave hardly any room around the title.
constexpr QSize roomInButtons(16, 4);

}  // namespace

TextView::TextView(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
}

void TextView::setValue(const ui::Text& value) {
  if (value.text != value_.text) setText(plain(value.text));
  value_ = value;
}

void TextView::dress(const SettingsLook& look) {
  if (const QFont wanted = look.font(value_); wanted != font()) setFont(wanted);
  const QColor ink = look.color(value_.color);
  if (palette().color(QPalette::WindowText) == ink) return;
  QPalette only;
  only.setColor(QPalette::WindowText, ink);
  setPalette(only);
}

ImageView::ImageView(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

void ImageView::setValue(const ui::Image& value) {
  if (value != value_) update();
  value_ = value;
}

void ImageView::dress(const SettingsLook& look) {
  const int side = look.pixels(value_.size * roomAroundSymbols);
  setFixedSize(side, side);
  if (std::exchange(ink_, look.color(value_.color)) != ink_) update();
}

void ImageView::paintEvent(QPaintEvent*) {
  QImage image = drawSymbol(value_.symbolName, qRound(width() * devicePixelRatioF()), ink_);
  image.setDevicePixelRatio(devicePixelRatioF());
  QPainter(this).drawImage(0, 0, image);
}

DotView::DotView(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

void DotView::setValue(const ui::Dot& value) { value_ = value; }

void DotView::dress(const SettingsLook& look) {
  const int side = look.pixels(dotSize);
  setFixedSize(side, side);
  QColor ink = look.color(value_.color);
  ink.setAlphaF(static_cast<float>(value_.opacity));
  if (std::exchange(ink_, ink) != ink_) update();
}

void DotView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(ink_);
  painter.drawEllipse(rect());
}

CheckBoxView::CheckBoxView(QWidget* parent) : QCheckBox(parent) {
  // toggled() and not clicked(), because accessibility tools turn the box without a click.
  connect(this, &QAbstractButton::toggled, this, [this](bool on) {
    if (const auto set = set_) set(on);
  });
}

void CheckBoxView::setValue(const ui::Toggle& value) {
  set_ = value.set;
  setAccessibleName(plain(value.title));
  const QSignalBlocker nobodysWish(this);
  setChecked(value.isOn);
}

ButtonView::ButtonView(QWidget* parent) : QPushButton(parent) {
  connect(this, &QAbstractButton::clicked, this, [this] {
    if (const auto action = action_) action();
  });
}

void ButtonView::setValue(const ui::Button& value) {
  action_ = value.action;
  const QString title = plain(value.title).replace(QLatin1Char('&'), QLatin1String("&&"));
  if (title != text()) setText(title);
  setEnabled(value.isEnabled);
}

void ButtonView::dress(const SettingsLook& look) {
  if (const QFont wanted = look.font({}); wanted != font()) setFont(wanted);
}

QSize ButtonView::sizeHint() const { return QPushButton::sizeHint() + roomInButtons; }

QWidget* drawn(const ui::Text& value, QWidget* existing, QWidget* parent) {
  return drawn<TextView>(value, existing, parent);
}
QWidget* drawn(const ui::Image& value, QWidget* existing, QWidget* parent) {
  return drawn<ImageView>(value, existing, parent);
}
QWidget* drawn(const ui::Dot& value, QWidget* existing, QWidget* parent) {
  return drawn<DotView>(value, existing, parent);
}
QWidget* drawn(const ui::Toggle& value, QWidget* existing, QWidget* parent) {
  return value.style == ui::Toggle::Style::checkBox ? drawn<CheckBoxView>(value, existing, parent)
                                                    : drawn<SwitchButton>(value, existing, parent);
}
QWidget* drawn(const ui::Button& value, QWidget* existing, QWidget* parent) {
  return drawn<ButtonView>(value, existing, parent);
}

}  // namespace tollvane
