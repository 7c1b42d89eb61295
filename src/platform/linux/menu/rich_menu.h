// The menu that a click on the bell opens: made anew each time from what the delegate fills in, unchanged while it is
// open, gone when it closes. Main thread only; needs a QApplication.
//
//   RichMenu menu(delegate);
//   menu.toggle({1266, 14});
#pragma once

#include <QPoint>
#include <QPointer>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/menu/menu_widget.h"
#include "platform/menu.h"

namespace tollvane {

class LayerMenu;

class RichMenu : public QObject {
  Q_OBJECT

 public:
  // The delegate outlives this. An item's action is called from the event loop, not while the menu closes; not at all
  // once this is gone.
  explicit RichMenu(MenuDelegate& delegate);
  ~RichMenu() override;

  // Whether a menu can be shown in front of the windows of this desktop. Where it cannot, toggle() does nothing.
  static bool isPossible();

  // Opens the menu, or closes it when it is open. `click`: where the bar says that the user clicked, in the pixels of
  // the whole desktop; 0, 0 when it does not know.
  void toggle(QPoint click);

  void close();
  bool isOpen() const { return (!widget_.isNull() && widget_->isVisible()) || isOpening(); }

  // The open menu; null while there is none.
  MenuWidget* widget() const { return widget_; }

  // Called right before an item's action. `activationToken`: of the user's choice; empty if the window system gives
  // none.
  std::function<void(const std::string& activationToken)> onChoice;

 private:
  bool isOpening() const;
  void build();
  void openOnX11(QPoint click);
  void openOnWayland(QPoint click);
  void closed();
  void choose(QAction* action);

  MenuDelegate& delegate_;
  QPointer<MenuWidget> widget_;
  std::unique_ptr<LayerMenu> layers_;  // on Wayland, while the menu is open
  QPointer<LayerMenu> closing_;        // the same, until the choice has been told
};

}  // namespace tollvane
