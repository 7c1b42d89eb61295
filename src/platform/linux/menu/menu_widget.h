// One open menu, or submenu, as a window of the toolkit. Main thread only.
#pragma once

#include <QBasicTimer>
#include <QMenu>
#include <QString>
#include <memory>
#include <vector>

#include "platform/linux/menu/menu_entry.h"
#include "platform/menu.h"

namespace tollvane {

class MenuWidget : public QMenu {
  Q_OBJECT

 public:
  // Submenus come along.
  explicit MenuWidget(std::shared_ptr<const Menu> menu);

  // The entry that the style has just been asked about.
  const MenuEntry* styledEntry() const { return styled_; }

  const std::vector<MenuEntry*>& entries() const { return entries_; }
  const std::vector<MenuWidget*>& submenus() const { return submenus_; }

  void setVisible(bool visible) override;

 Q_SIGNALS:
  // Right before the window is hidden.
  void vanishing();

 protected:
  void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  MenuWidget(const std::vector<MenuItem>& items, MenuWidget* parent);
  void addEntries(const std::vector<MenuItem>& items);
  void arrangeTitles();
  void collect(std::vector<MenuEntry*>& all) const;
  bool isOutside(const QPoint& global) const;
  void closeAll();
  bool chooseByKeys(const QKeyEvent& event);
  bool findTyped(const QKeyEvent& event);
  bool goToTyped();

  std::shared_ptr<const Menu> menu_;  // the entries refer to its items; only the top one holds it
  MenuWidget* top_;
  std::vector<MenuEntry*> entries_;
  std::vector<MenuWidget*> submenus_;
  mutable const MenuEntry* styled_ = nullptr;
  bool pressedOutside_ = false;
  QString typed_;
  QBasicTimer typing_;
};

}  // namespace tollvane
