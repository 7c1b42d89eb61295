// An open menu as the toolkit knows it. Main thread only.
#pragma once

#include <QAction>
#include <QBasicTimer>
#include <QFont>
#include <QKeySequence>
#include <QMenu>
#include <QString>
#include <memory>
#include <vector>

#include "platform/linux/menu/menu_title.h"
#include "platform/menu.h"

namespace tollvane {

// One item of the menu as an action of the toolkit. The action's text is what screen readers say; `title` is drawn
// instead of it. `item` must outlive it.
class MenuEntry : public QAction {
 public:
  MenuEntry(const MenuItem& item, const QFont& menuFont, QObject* parent);

  const MenuItem& item() const { return item_; }
  MenuTitle& title() { return title_; }
  const MenuTitle& title() const { return title_; }

  // Has the modifier for commands; empty if the item has no key equivalent.
  const QKeySequence& keys() const { return keys_; }

  // The text that typing searches for: the application's name, or the command's own.
  const QString& typed() const { return typed_; }

 private:
  const MenuItem& item_;
  MenuTitle title_;
  QKeySequence keys_;
  QString typed_;
};

// The item's words in one line, without the blanks that only place them.
QString spokenTitle(const MenuItem& item);

// One menu, or submenu, as a window.
class MenuWidget : public QMenu {
  Q_OBJECT

 public:
  // Makes the submenus too.
  explicit MenuWidget(std::shared_ptr<const Menu> menu);

  // The entry that the style has just been asked about.
  const MenuEntry* styledEntry() const { return styled_; }

  const std::vector<MenuEntry*>& entries() const { return entries_; }
  const std::vector<MenuWidget*>& submenus() const { return submenus_; }

  void setVisible(bool visible) override;

 Q_SIGNALS:
  // Emitted right before the window is hidden.
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
