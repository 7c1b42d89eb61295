// The item as the bus sees it: the properties, methods and signals of the StatusNotifierItem protocol, and nothing
// else. Written by hand, because the toolkit's own tray icon looks for a bar only once in a process's life. Main thread
// only.
// Source: the page StatusNotifierItem of the freedesktop.org wiki.
#pragma once

#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <utility>

#include "platform/linux/bell/bus_types.h"
#include "platform/linux/drawing/symbols.h"

namespace tollvane {

// A click on the item, as the bar reports it.
struct StatusItemActivation {
  int x = 0;  // root coordinates of the click, if the bar knows them
  int y = 0;
  QString token;  // the window system asks for this token before it raises a window; may be empty
};

class StatusNotifierItem : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")

  Q_PROPERTY(QString Category READ category)
  Q_PROPERTY(QString Id READ id)
  Q_PROPERTY(QString Title READ title)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(int WindowId READ windowId)
  Q_PROPERTY(QString IconThemePath READ iconThemePath)
  Q_PROPERTY(QString IconName READ iconName)
  Q_PROPERTY(QString IconAccessibleDesc READ iconAccessibleDescription)
  Q_PROPERTY(tollvane::IconPixmaps IconPixmap READ iconPixmap)
  Q_PROPERTY(QString OverlayIconName READ noName)
  Q_PROPERTY(tollvane::IconPixmaps OverlayIconPixmap READ noPixmap)
  Q_PROPERTY(QString AttentionIconName READ noName)
  Q_PROPERTY(tollvane::IconPixmaps AttentionIconPixmap READ noPixmap)
  Q_PROPERTY(QString AttentionMovieName READ noName)
  Q_PROPERTY(tollvane::ToolTip ToolTip READ toolTip)
  Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
  Q_PROPERTY(QDBusObjectPath Menu READ menu)

 public:
  static constexpr const char* objectPath = "/StatusNotifierItem";

  // `iconThemePath`: the directory that contains hicolor/.
  StatusNotifierItem(QString iconThemePath, std::function<void(const StatusItemActivation&)> onActivate);

  // Each sends its signal only if something has changed, because every signal makes the bar fetch everything again.
  void setIcon(const QString& iconName, const QString& accessibleDescription);
  void setToolTipTitle(const QString& title);
  void setTone(BarTone tone);
  void setIconIsNamed(bool isNamed);  // otherwise the icon is told as pictures only

  // `path`: where the menu is on the same connection. `itemIsMenu`: a click opens the menu, because there is nothing to
  // activate. To be called before the item is registered, because bars ask only once.
  void setMenu(const QString& path, bool itemIsMenu);

  // Returns, only once, the token that the bar gave for the click that chose a menu item; may be empty.
  QString takeActivationToken() { return std::exchange(activationToken_, QString()); }

  QString category() const { return QStringLiteral("ApplicationStatus"); }
  QString id() const { return QStringLiteral("tollvane"); }
  QString title() const { return QStringLiteral("Tollvane"); }
  QString status() const { return QStringLiteral("Active"); }
  int windowId() const { return 0; }
  QString iconThemePath() const { return iconThemePath_; }
  QString iconName() const { return iconIsNamed_ ? iconName_ : QString(); }
  QString iconAccessibleDescription() const { return accessibleDescription_; }
  IconPixmaps iconPixmap() const;
  QString noName() const { return {}; }
  IconPixmaps noPixmap() const { return {}; }
  tollvane::ToolTip toolTip() const;
  bool itemIsMenu() const { return itemIsMenu_; }
  QDBusObjectPath menu() const { return QDBusObjectPath(menuPath_); }

  // NOLINTBEGIN(readability-identifier-naming): the protocol's names
 public Q_SLOTS:
  // The bar calls these.
  void Activate(int x, int y);
  void SecondaryActivate(int x, int y);
  void ContextMenu(int x, int y);
  void Scroll(int delta, const QString& orientation);
  void ProvideXdgActivationToken(const QString& token);

 Q_SIGNALS:
  void NewTitle();
  void NewIcon();
  void NewToolTip();
  void NewStatus(const QString& status);
  void NewMenu();

  // NOLINTEND(readability-identifier-naming)

 private:
  QString iconThemePath_;
  std::function<void(const StatusItemActivation&)> onActivate_;
  QString iconName_;
  QString accessibleDescription_;
  QString toolTipTitle_;
  QString activationToken_;  // of the click that Activate or the menu is about to report
  // There is no object at this path. Hosts know it as "no menu"; some of them take a missing property for a menu.
  QString menuPath_ = QStringLiteral("/NO_DBUSMENU");
  bool itemIsMenu_ = false;
  BarTone tone_ = BarTone::dark;
  bool iconIsNamed_ = true;
  mutable std::optional<IconPixmaps> pixmaps_;  // drawn when a bar first asks, because many never do
};

}  // namespace tollvane
