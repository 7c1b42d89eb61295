#include "platform/linux/windows/row_view.h"

#include <QGridLayout>
#include <QMouseEvent>
#include <algorithm>

#include "platform/linux/windows/control_views.h"

namespace tollvane {
namespace {

constexpr double markColumn = 17;  // for a font size of 13; and room for a ring
constexpr double rowHeight = 22;
constexpr int gap = 8;

void dismiss(QWidget* view) {
  view->hide();
  view->deleteLater();  // its own action may have caused this
}

bool isMark(const QWidget* view) {
  return dynamic_cast<const TextView*>(view) == nullptr && dynamic_cast<const ButtonView*>(view) == nullptr;
}

}  // namespace

RowView::RowView(QWidget* parent) : QWidget(parent), grid_(new QGridLayout(this)) {
  grid_->setContentsMargins(0, 0, 0, 0);
  grid_->setHorizontalSpacing(gap);
}

void RowView::setValue(const ui::Row& value) {
  std::vector<QWidget*> before = views_;
  before.resize(std::max(before.size(), value.controls.size()), nullptr);
  views_.clear();
  for (const ui::Control& control : value.controls) {
    QWidget* existing = before[views_.size()];
    views_.push_back(std::visit([&](const auto& each) { return drawn(each, existing, this); }, control));
  }
  QString description;
  for (const QWidget* view : views_) {
    if (const auto* text = dynamic_cast<const TextView*>(view)) description = text->accessibleName();
  }
  if (QAbstractButton* box = checkBox(); box && box->accessibleDescription() != description) {
    box->setAccessibleDescription(description == box->accessibleName() ? QString() : description);
  }

  std::vector<QWidget*> now = views_;
  now.resize(before.size(), nullptr);
  if (now == before) return;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (before[i] == nullptr || before[i] == now[i]) continue;
    grid_->removeWidget(before[i]);
    dismiss(before[i]);
  }
  arrange();
}

void RowView::arrange() {
  QWidget* firstText = nullptr;
  for (int column = 0; column < static_cast<int>(views_.size()); ++column) {
    QWidget* view = views_[static_cast<std::size_t>(column)];
    auto* text = dynamic_cast<TextView*>(view);
    grid_->addWidget(view, 0, column, text ? Qt::Alignment() : Qt::AlignCenter);
    grid_->setColumnStretch(column, text && firstText ? 1 : 0);
    view->show();
    view->raise();  // so that screen readers come to it in its turn
    if (text == nullptr) continue;
    // The text after the name may take several lines; a name should stay in one.
    QSizePolicy policy = text->sizePolicy();
    policy.setHorizontalPolicy(firstText ? QSizePolicy::Preferred : QSizePolicy::Minimum);
    text->setSizePolicy(policy);
    text->standAt(firstText ? TextView::Edge::trailing : TextView::Edge::leading);
    firstText = text;
  }
  // The room that is left over comes last.
  grid_->setColumnStretch(static_cast<int>(views_.size()), firstText ? 0 : 1);
}

void RowView::dress(const SettingsLook& look) {
  setMinimumHeight(look.pixels(rowHeight) + contentsMargins().top() + contentsMargins().bottom());
  const int mark = !views_.empty() && isMark(views_.front()) ? look.pixels(markColumn) + 2 * ringRoom : 0;
  if (grid_->columnMinimumWidth(0) != mark) grid_->setColumnMinimumWidth(0, mark);
}

std::vector<QAbstractButton*> RowView::buttons() const {
  std::vector<QAbstractButton*> found;
  for (QWidget* view : views_) {
    if (auto* button = dynamic_cast<QAbstractButton*>(view)) found.push_back(button);
  }
  return found;
}

QAbstractButton* RowView::checkBox() const {
  for (QWidget* view : views_) {
    if (auto* box = dynamic_cast<CheckBoxView*>(view)) return box;
  }
  return nullptr;
}

void RowView::mousePressEvent(QMouseEvent* event) {
  event->setAccepted(event->button() == Qt::LeftButton && checkBox() != nullptr);
}

void RowView::mouseReleaseEvent(QMouseEvent* event) {
  QAbstractButton* box = checkBox();
  if (event->button() == Qt::LeftButton && box && rect().contains(event->position().toPoint())) box->click();
}

}  // namespace tollvane
