#include "platform/linux/windows/control_views.h"

#include <QPainter>
#include <QSignalBlocker>
#include <utility>

#include "platform/linux/drawing/contrast.h"
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

constexpr double iconSize = 18;
constexpr double boxSize = 17;
constexpr double boxRadius = 4;
constexpr double buttonRadius = 7;
constexpr QSize roomInButtons(16, 6);

}  // namespace

TextView::TextView(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
  standAt(Edge::leading);
}

// The toolkit would go by the direction of the text, and set English words apart in a layout from right to left.
void TextView::standAt(Edge edge) {
  const bool left = (edge == Edge::leading) == (layoutDirection() == Qt::LeftToRight);
  setAlignment((left ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignAbsolute | Qt::AlignVCenter);
}

void TextView::setValue(const ui::Text& value) {
  if (value.text != value_.text) {
    setText(plain(value.text));
    // Screen readers say what is there, without the places where a line may end.
    setAccessibleName(shortenedInside(value.text, longestText));
  }
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

IconView::IconView(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

void IconView::setValue(const ui::ApplicationIcon& value) {
  if (value == value_) return;
  value_ = value;
  const QString name = QString::fromStdString(value.name);
  icon_ = name.startsWith(u'/') ? QIcon(name) : QIcon::fromTheme(name);
  update();
}

void IconView::dress(const SettingsLook& look) {
  const int side = look.pixels(iconSize);
  setFixedSize(side, side);
}

void IconView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  icon_.paint(&painter, rect());
}

CheckBoxView::CheckBoxView(QWidget* parent) : QAbstractButton(parent) {
  setCheckable(true);
  setFocusPolicy(Qt::StrongFocus);
  // toggled() and not clicked(), because accessibility tools turn the box without a click.
  connect(this, &QAbstractButton::toggled, this, [this](bool on) {
    if (const auto set = set_) set(on);
  });
}

void CheckBoxView::setValue(const ui::Toggle& value) {
  set_ = value.set;
  setAccessibleName(QString::fromStdString(value.title));
  if (isChecked() == value.isOn) return;
  const QSignalBlocker nobodysWish(this);
  setChecked(value.isOn);
  update();
}

void CheckBoxView::dress(const SettingsLook& look) {
  if (look_ == look) return;
  look_ = look;
  setFixedSize(sizeHint());
  update();
}

QSize CheckBoxView::sizeHint() const {
  const int side = (look_ ? look_->pixels(boxSize) : 0) + 2 * ringRoom;
  return {side, side};
}

void CheckBoxView::paintEvent(QPaintEvent*) {
  if (!look_) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) painter.setOpacity(0.5);
  const bool on = isChecked();
  const QRectF box = onDevicePixels(painter, QRectF(rect()).adjusted(ringRoom, ringRoom, -ringRoom, -ringRoom));
  const double radius = box.width() * boxRadius / boxSize;
  drawBox(painter, box, radius, isDown() ? look_->rail(on).darker(112) : look_->rail(on), look_->railEdge(on));
  if (on) {
    const auto at = [&](double x, double y) {
      return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
    };
    painter.setPen(QPen(look_->knob(true), box.width() / 8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({at(0.26, 0.53), at(0.43, 0.70), at(0.75, 0.32)}));
  }
  drawFocusRing(painter, *this, box, radius, *look_);
}

ButtonView::ButtonView(QWidget* parent) : QAbstractButton(parent) {
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QAbstractButton::clicked, this, [this] {
    if (const auto action = action_) action();
  });
}

void ButtonView::setValue(const ui::Button& value) {
  action_ = value.action;
  const QString title = plain(value.title).replace(QLatin1Char('&'), QLatin1String("&&"));
  if (title != text()) {
    setText(title);
    updateGeometry();
  }
  setEnabled(value.isEnabled);
}

void ButtonView::dress(const SettingsLook& look) {
  if (look_ == look) return;
  look_ = look;
  if (const QFont wanted = look.font({}); wanted != font()) setFont(wanted);
  updateGeometry();
  update();
}

QSize ButtonView::sizeHint() const {
  const QSize title = fontMetrics().size(Qt::TextShowMnemonic, text());
  return title + 2 * roomInButtons + QSize(2 * ringRoom, 2 * ringRoom);
}

void ButtonView::paintEvent(QPaintEvent*) {
  if (!look_) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool on = isEnabled();
  const QRectF box = QRectF(rect()).adjusted(ringRoom, ringRoom, -ringRoom, -ringRoom);
  // The text of a disabled button adapts to the button. The other way round, the button could become dark on a light
  // window.
  const QColor& rail = look_->rail(on);
  const QColor ink = on ? look_->knob(true) : readable(look_->disabled(), {rail}, visibleContrast);
  const QColor fill = on ? readable(rail, {ink}, readableContrast) : rail;
  drawBox(painter, box, buttonRadius, isDown() ? fill.darker(112) : fill, look_->railEdge(on));
  painter.setPen(ink);
  painter.drawText(rect(), Qt::AlignCenter | Qt::TextShowMnemonic, text());
  drawFocusRing(painter, *this, box, buttonRadius, *look_);
}

QWidget* drawn(const ui::Text& value, QWidget* existing, QWidget* parent) {
  return drawn<TextView>(value, existing, parent);
}
QWidget* drawn(const ui::Image& value, QWidget* existing, QWidget* parent) {
  return drawn<ImageView>(value, existing, parent);
}
QWidget* drawn(const ui::ApplicationIcon& value, QWidget* existing, QWidget* parent) {
  return drawn<IconView>(value, existing, parent);
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
