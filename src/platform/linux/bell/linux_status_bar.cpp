#include "platform/linux/bell/linux_status_bar.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <optional>
#include <utility>

#include "platform/linux/bell/dbus_menu.h"
#include "platform/linux/bell/status_notifier_item.h"
#include "platform/linux/bell/status_watcher.h"
#include "platform/linux/drawing/appearance.h"
#include "platform/linux/drawing/plain_text.h"
#include "platform/linux/menu/rich_menu.h"

namespace tollvane {
namespace {

QString fromUtf8(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Each item has a connection of its own, because the protocol tells items apart by their connection only: the object's
// path is the same for all.
class ItemConnection {
 public:
  explicit ItemConnection(const QString& name)
      : name_(name), bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)) {}
  ~ItemConnection() { QDBusConnection::disconnectFromBus(name_); }
  ItemConnection(const ItemConnection&) = delete;
  ItemConnection& operator=(const ItemConnection&) = delete;

  QDBusConnection& operator*() { return bus_; }
  QDBusConnection* operator->() { return &bus_; }

 private:
  QString name_;
  QDBusConnection bus_;
};

// Without a preference the bar is taken for dark, as most bars are.
BarTone toneFor(ColorScheme scheme) { return scheme == ColorScheme::light ? BarTone::light : BarTone::dark; }

class LinuxStatusItem : public StatusItem {
 public:
  LinuxStatusItem(int number, const QString& iconThemePath, std::shared_ptr<std::string> token)
      : bus_(QStringLiteral("tollvane-status-%1").arg(number)),
        item_(iconThemePath, [this](const StatusItemActivation& click) { clicked(click); }),
        token_(std::move(token)) {
    if (!bus_->isConnected()) return;
    registerObject(StatusNotifierItem::objectPath, item_);
    schemes_.emplace(*bus_, [this](ColorScheme scheme) { item_.setTone(toneFor(scheme)); });
    xApp_.emplace(*bus_, [this](bool isThere) { item_.setIconIsNamed(!isThere); });
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
    exported_.emplace(delegate, [this] { chosen(item_.takeActivationToken().toStdString()); });
    if (bus_->isConnected()) registerObject(DBusMenu::objectPath, *exported_);
    item_.setMenu(QString::fromLatin1(DBusMenu::objectPath), !RichMenu::isPossible());
    if (!RichMenu::isPossible()) return;
    drawn_.emplace(delegate);
    drawn_->onChoice = [this](const std::string& token) { chosen(token); };
  }

 private:
  void registerObject(const char* path, QObject& object) {
    bus_->registerObject(
        QString::fromLatin1(path), &object,
        QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
  }

  // The name that the protocol suggests. If a sandbox forbids it, the connection's own name does as well.
  QString ownName(int number) {
    const QString name =
        QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(number);
    return bus_->registerService(name) ? name : bus_->baseService();
  }

  void clicked(const StatusItemActivation& click) {
    *token_ = click.token.toStdString();
    if (drawn_) drawn_->toggle({click.x, click.y});
  }

  // If a choice has no token of its own, the token of the click that opened the menu stays.
  void chosen(const std::string& token) {
    if (!token.empty()) *token_ = token;
  }

  void menuMayHaveChanged() {
    if (exported_) exported_->contentsMayHaveChanged();
  }

  ItemConnection bus_;
  StatusNotifierItem item_;
  std::shared_ptr<std::string> token_;
  std::optional<DBusMenu> exported_;
  std::optional<RichMenu> drawn_;
  std::optional<ColorSchemeWatcher> schemes_;
  std::optional<XAppWatch> xApp_;
  std::optional<WatcherRegistration> registration_;
};

}  // namespace

LinuxStatusBar::LinuxStatusBar(std::filesystem::path iconThemePath) : iconThemePath_(std::move(iconThemePath)) {}

std::string LinuxStatusBar::takeActivationToken() { return std::exchange(*token_, {}); }

std::unique_ptr<StatusItem> LinuxStatusBar::makeStatusItem() {
  // Counted for the whole process, because the names of connections and on the bus belong to the process, not to the
  // bar.
  static int made = 0;
  return std::make_unique<LinuxStatusItem>(++made, QString::fromStdString(iconThemePath_.string()), token_);
}

}  // namespace tollvane
