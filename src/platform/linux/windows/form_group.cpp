#include "platform/linux/windows/form_group.h"

#include <QPainter>
#include <QStringList>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/linux/windows/control_views.h"
#include "platform/linux/windows/row_view.h"
#include "platform/linux/windows/switch_button.h"

namespace tollvane {
namespace {

constexpr int sideRoom = 14;
constexpr int cellRoom = 9;   // between a line and the content of the cell
constexpr int innerRoom = 4;  // between a row and the text below it; a switch's focus ring needs it
constexpr int buttonRoom = 8;
constexpr double cornerRadius = 9;

QWidget* drawnElement(const ui::Element& element, QWidget* existing, QWidget* parent) {
  if (const auto* row = std::get_if<ui::Row>(&element)) return drawn<RowView>(*row, existing, parent);
  // In a row, a button is no wider than necessary.
  if (const auto* button = std::get_if<ui::Button>(&element))
    return drawn<RowView>(ui::Row{button->identifier, {*button}}, existing, parent);
  if (const auto* toggle = std::get_if<ui::Toggle>(&element)) return drawn(*toggle, existing, parent);
  return drawn(std::get<ui::Text>(element), existing, parent);
}

std::string identifierOf(const ui::Element& element) {
  if (const auto* button = std::get_if<ui::Button>(&element)) return "button " + button->identifier;
  if (const auto* row = std::get_if<ui::Row>(&element)) return "row " + row->identifier;
  if (const auto* toggle = std::get_if<ui::Toggle>(&element)) return "toggle " + toggle->identifier;
  return {};
}

bool startsCell(const ui::Element& element, const ui::Element* previous) {
  if (previous == nullptr) return true;
  const bool afterText = std::holds_alternative<ui::Text>(*previous);
  if (std::holds_alternative<ui::Text>(element)) return !afterText && !std::holds_alternative<ui::Toggle>(*previous);
  return !(afterText && std::holds_alternative<ui::Button>(element));
}

}  // namespace

FormGroup::FormGroup(QWidget* parent) : QWidget(parent), column_(new QVBoxLayout(this)) {
  column_->setContentsMargins(0, 0, 0, 0);
  column_->setSpacing(0);
}

void FormGroup::setValue(const std::vector<ui::Element>& value) {
  std::vector<Entry> before = std::exchange(entries_, {});
  std::string lastIdentifier;
  const ui::Element* previous = nullptr;
  for (const ui::Element& element : value) {
    std::string key = identifierOf(element);
    if (key.empty()) {
      key = lastIdentifier += " text";
    } else {
      lastIdentifier = key;
    }
    QWidget* existing = take(before, key);
    QWidget* view = drawnElement(element, existing, this);
    if (existing != nullptr && existing != view) before.push_back({{}, existing, false});
    entries_.push_back({key, view, startsCell(element, previous)});
    previous = &element;
  }
  arrange(before);
  describeSwitches();
}

QWidget* FormGroup::take(std::vector<Entry>& entries, const std::string& key) const {
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& each) { return each.key == key; });
  if (found == entries.end()) return nullptr;
  QWidget* view = found->view;
  entries.erase(found);
  return view;
}

void FormGroup::arrange(const std::vector<Entry>& dropped) {
  for (const Entry& entry : dropped) {
    column_->removeWidget(entry.view);
    entry.view->hide();
    entry.view->deleteLater();  // its own action may have caused this
  }
  if (!dropped.empty()) update();
  bool isNew = false;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    QWidget* view = entries_[i].view;
    const QLayoutItem* there = column_->itemAt(static_cast<int>(i));
    if (there == nullptr || there->widget() != view) {
      column_->insertWidget(static_cast<int>(i), view);
      view->show();
      isNew = true;
    }
    setRoom(i);
  }
  if (!isNew) return;
  // Screen readers read widgets in the order in which they were raised.
  for (const Entry& entry : entries_) entry.view->raise();
  update();
}

void FormGroup::setRoom(std::size_t index) {
  const Entry& entry = entries_[index];
  const bool endsCell = index + 1 == entries_.size() || entries_[index + 1].startsCell;
  Q_ASSERT(entry.view != nullptr);
  const bool isRow = dynamic_cast<RowView*>(entry.view) != nullptr;
  const int above = entry.startsCell ? cellRoom : isRow ? buttonRoom - innerRoom : 0;
  QMargins room(sideRoom, above, sideRoom, endsCell ? cellRoom : innerRoom);
  // The box itself stands at the edge, and the room for its ring outside.
  if (isRow && layoutDirection() == Qt::LeftToRight) room.setLeft(sideRoom - ringRoom);
  if (isRow && layoutDirection() == Qt::RightToLeft) room.setRight(sideRoom - ringRoom);
  if (entry.view->contentsMargins() != room) entry.view->setContentsMargins(room);
}

// Screen readers say the text below a switch together with the switch.
void FormGroup::describeSwitches() {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    auto* button = dynamic_cast<SwitchButton*>(entries_[i].view);
    if (button == nullptr) continue;
    QStringList texts;
    for (std::size_t next = i + 1; next < entries_.size() && !entries_[next].startsCell; ++next) {
      if (const auto* text = dynamic_cast<const TextView*>(entries_[next].view)) texts.append(text->accessibleName());
    }
    const QString description = texts.join(QLatin1Char(' '));
    if (button->accessibleDescription() != description) button->setAccessibleDescription(description);
  }
}

void FormGroup::dress(const SettingsLook& look) {
  if (background_ == look.group() && border_ == look.border() && separator_ == look.separator()) return;
  background_ = look.group();
  border_ = look.border();
  separator_ = look.separator();
  update();
}

std::vector<QWidget*> FormGroup::elements() const {
  std::vector<QWidget*> all;
  for (const Entry& entry : entries_) all.push_back(entry.view);
  return all;
}

std::vector<QAbstractButton*> FormGroup::buttons() const {
  std::vector<QAbstractButton*> all;
  for (const Entry& entry : entries_) {
    if (auto* button = dynamic_cast<QAbstractButton*>(entry.view)) all.push_back(button);
    if (const auto* row = dynamic_cast<const RowView*>(entry.view)) {
      for (QAbstractButton* button : row->buttons()) all.push_back(button);
    }
  }
  return all;
}

void FormGroup::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  drawBox(painter, rect(), cornerRadius, background_, border_);
  for (std::size_t i = 1; i < entries_.size(); ++i) {
    if (!entries_[i].startsCell) continue;
    painter.fillRect(onDevicePixels(painter, QRect(sideRoom, entries_[i].view->y(), width() - 2 * sideRoom, 1)),
                     separator_);
  }
}

}  // namespace tollvane
