// Controls side by side in a form: a mark or check box in a column of its own, so that the names of all rows stand
// below each other; then the name; then further text at the trailing edge. A click anywhere in the row reaches its
// check box. Main thread only.
#pragma once

#include <QWidget>
#include <vector>

#include "platform/linux/windows/settings_look.h"

class QAbstractButton;
class QGridLayout;

namespace tollvane {

class RowView : public QWidget, public Dressed {
 public:
  explicit RowView(QWidget* parent);

  void setValue(const ui::Row& value);
  void dress(const SettingsLook& look) override;

  // In the order of the row.
  std::vector<QAbstractButton*> buttons() const;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  void arrange();
  QAbstractButton* checkBox() const;

  QGridLayout* grid_;
  std::vector<QWidget*> views_;
};

}  // namespace tollvane
