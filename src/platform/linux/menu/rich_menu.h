// The menu that a click on the bell opens. It is made anew each time from what the delegate fills in, unchanged while
// it is open, and destroyed when it closes. Main thread only; needs a QApplication.
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
  // `delegate` must outlive this object. An item's action is called from the event loop, not while the menu closes; it
  // is not called after this object is destroyed.
  explicit RichMenu(MenuDelegate& delegate);
  ~RichMenu() override;

  // Whether a menu can be shown in front of the windows of this desktop. If not, toggle() does nothing.
  static bool isPossible();

  // Opens the menu, or closes it if it is open. `click`: where the user clicked, as the bar says, in the pixels of the
  // whole desktop; 0, 0 if the bar does not know.
  void toggle(QPoint click);

  // The same without a click, for the keyboard: the menu opens where bells usually are, at the end of the panel, and
  // its first sound is chosen. Keys that the caller's own key still holds back are waited for.
  void toggleByKeyboard();

  void close();
  bool isOpen() const { return (!widget_.isNull() && widget_->isVisible()) || isOpening(); }

  // The open menu; null if it is closed.
  MenuWidget* widget() const { return widget_.data(); }

  // Called right before an item's action. `activationToken`: for the user's choice; empty if the window system gives
  // none.
  std::function<void(const std::string& activationToken)> onChoice;

 private:
  bool isOpening() const;
  void build();
  void openOnX11(QPoint point);
  void openOnWayland(QPoint click, bool atPointer);
  void chooseFirst();
  void takeKeyboard(int attempts);
  void closed();
  void choose(QAction* action);

  MenuDelegate& delegate_;
  QPointer<MenuWidget> widget_;
  std::unique_ptr<LayerMenu> layers_;  // on Wayland, while the menu is open
  QPointer<LayerMenu> closing_;        // the same after closing, until the choice has been reported
};

}  // namespace tollvane
