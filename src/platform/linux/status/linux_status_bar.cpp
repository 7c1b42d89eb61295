#include "platform/linux/status/linux_status_bar.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <optional>
#include <utility>

#include "platform/linux/menu/rich_menu.h"
#include "platform/linux/status/color_scheme_watcher.h"
#include "platform/linux/status/dbus_menu.h"
#include "platform/linux/status/plain_text.h"
#include "platform/linux/status/watcher_registration.h"

namespace tollvane {
namespace {

QString fromUtf8(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// A connection of its own for each item, because the protocol knows an item by its connection alone: the object's path
// is the same for all.
class BusConnection {
 public:
  explicit BusConnection(const QString& name)
      : name_(name), bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)) {}
  ~BusConnection() { QDBusConnection::disconnectFromBus(name_); }
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  QDBusConnection& operator*() { return bus_; }
  QDBusConnection* operator->() { return &bus_; }

 private:
  QString name_;
  QDBusConnection bus_;
};

// Most bars are dark.
BarTone toneFor(ColorScheme scheme) { return scheme == ColorScheme::light ? BarTone::light : BarTone::dark; }

class LinuxStatusItem : public StatusItem {
 public:
  LinuxStatusItem(int number, const QString& iconThemePath, std::function<void(const StatusItemActivation&)> onActivate,
                  std::shared_ptr<UserGesture> gesture)
      : bus_(QStringLiteral("tollvane-status-%1").arg(number)),
        item_(iconThemePath, [this](const StatusItemActivation& click) { clicked(click); }),
        onActivate_(std::move(onActivate)),
        gesture_(std::move(gesture)) {
    if (!bus_->isConnected()) {
      return;
    }
    registerObject(StatusNotifierItem::kPath, item_);
    schemes_.emplace(*bus_, [this](ColorScheme scheme) { item_.setTone(toneFor(scheme)); });
    registration_.emplace(*bus_, ownName(number));
  }

  void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override {
    item_.setIcon(iconNameForSymbol(symbolName), fromUtf8(accessibilityDescription));
    menuMayHaveChanged();
  }

  void setToolTip(std::string_view text) override {
    item_.setToolTipTitle(fromUtf8(plainToolTip(text)));
    menuMayHaveChanged();
  }

  void setMenu(MenuDelegate& delegate) override {
    exported_.emplace(delegate, [this](uint timestamp) { chosen(item_.takeActivationToken(), timestamp); });
    if (bus_->isConnected()) {
      registerObject(DBusMenu::kPath, *exported_);
    }
    item_.setMenu(QString::fromLatin1(DBusMenu::kPath), !RichMenu::isPossible());
    if (RichMenu::isPossible()) {
      drawn_.emplace(delegate);
      drawn_->onChoice = [this](const RichMenuChoice& choice) {
        chosen(QString::fromStdString(choice.activationToken), choice.timestamp);
      };
    }
  }

 private:
  void registerObject(const char* path, QObject& object) {
    bus_->registerObject(
        QString::fromLatin1(path), &object,
        QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
  }

  // The name that the protocol suggests. A sandbox may forbid it; the connection's own name does as well.
  QString ownName(int number) {
    const QString name =
        QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(number);
    return bus_->registerService(name) ? name : bus_->baseService();
  }

  void clicked(const StatusItemActivation& click) {
    *gesture_ = {.activationToken = click.token.toStdString()};
    if (onActivate_) {
      onActivate_(click);
    }
    if (drawn_) {
      drawn_->toggle({click.x, click.y});
    }
  }

  // A choice without a token of its own still has the one of the click that opened the menu.
  void chosen(const QString& token, uint timestamp) {
    if (!token.isEmpty()) {
      gesture_->activationToken = token.toStdString();
    }
    gesture_->timestamp = timestamp;
  }

  void menuMayHaveChanged() {
    if (exported_) {
      exported_->contentsMayHaveChanged();
    }
  }

  BusConnection bus_;
  StatusNotifierItem item_;
  std::function<void(const StatusItemActivation&)> onActivate_;
  std::shared_ptr<UserGesture> gesture_;
  std::optional<DBusMenu> exported_;
  std::optional<RichMenu> drawn_;
  std::optional<ColorSchemeWatcher> schemes_;
  std::optional<WatcherRegistration> registration_;
};

}  // namespace

LinuxStatusBar::LinuxStatusBar(std::filesystem::path iconThemePath) : iconThemePath_(std::move(iconThemePath)) {}

void LinuxStatusBar::setActivateHandler(std::function<void(const StatusItemActivation&)> handler) {
  onActivate_ = std::move(handler);
}

std::string LinuxStatusBar::takeActivationToken() { return std::exchange(gesture_->activationToken, {}); }

std::unique_ptr<StatusItem> LinuxStatusBar::makeStatusItem() {
  // Counted for the whole process: a bus name and a connection's name are the process's, not the bar's.
  static int made = 0;
  return std::make_unique<LinuxStatusItem>(++made, QString::fromStdString(iconThemePath_.string()), onActivate_,
                                           gesture_);
}

}  // namespace tollvane
