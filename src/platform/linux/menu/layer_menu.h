// An open menu on a Wayland desktop with a layer shell. The menu and its submenus are surfaces of their own in front of
// a transparent one that covers the output. The transparent one reports where the pointer is (nothing else does), gets
// the keys, and takes the click that closes the menu. Main thread only; needs LayerShell::ofThisDesktop().
#pragma once

#include <QElapsedTimer>
#include <QPoint>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/menu/layer_shell.h"
#include "platform/linux/menu/menu_widget.h"

namespace tollvane {

class LayerMenu : public QObject {
  Q_OBJECT

 public:
  // Opens the menu, which stays the caller's, at the pointer, or in the top right corner. `click`: where the user
  // clicked, as the bar says; used if there is no pointer.
  LayerMenu(LayerShell& shell, MenuWidget& menu, QPoint click, bool atPointer);
  ~LayerMenu() override;

  // False if the compositor has refused: then there will be no menu.
  bool isCovering() const { return static_cast<bool>(covering_); }

  // Asks for an activation token for the choice that the user has just made.
  std::string activationToken();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void cover();
  void open(QPoint at);
  void follow(MenuWidget& menu);
  void show(MenuWidget& menu);
  QRect withoutPanels(const QRect& output, QPoint click) const;
  wl_output* output() const;

  LayerShell& shell_;
  LayerShell::Windows windows_;
  QPointer<MenuWidget> menu_;
  QPoint click_;
  bool atPointer_;
  QWidget overlay_;
  std::unique_ptr<LayerSurface> covering_;
  std::map<const QObject*, std::unique_ptr<LayerSurface>> places_;
  QTimer noPointer_;
};

}  // namespace tollvane
