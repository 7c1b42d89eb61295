#include "platform/linux/status/linux_status_bar.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <optional>
#include <utility>

#include "platform/linux/status/bar_tone_watcher.h"
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

class LinuxStatusItem : public StatusItem {
 public:
  LinuxStatusItem(int number, const QString& iconThemePath, std::function<void(const StatusItemActivation&)> onActivate)
      : bus_(QStringLiteral("tollvane-status-%1").arg(number)), item_(iconThemePath, std::move(onActivate)) {
    if (!bus_->isConnected()) {
      return;
    }
    bus_->registerObject(
        QString::fromLatin1(StatusNotifierItem::kPath), &item_,
        QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    tone_.emplace(*bus_, [this](BarTone tone) { item_.setTone(tone); });
    registration_.emplace(*bus_, ownName(number));
  }

  void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override {
    item_.setIcon(iconNameForSymbol(symbolName), fromUtf8(accessibilityDescription));
  }

  void setToolTip(std::string_view text) override { item_.setToolTipTitle(fromUtf8(plainToolTip(text))); }

 private:
  // The name that the protocol suggests. A sandbox may forbid it; the connection's own name does as well.
  QString ownName(int number) {
    const QString name =
        QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(number);
    return bus_->registerService(name) ? name : bus_->baseService();
  }

  BusConnection bus_;
  StatusNotifierItem item_;
  std::optional<BarToneWatcher> tone_;
  std::optional<WatcherRegistration> registration_;
};

}  // namespace

LinuxStatusBar::LinuxStatusBar(std::filesystem::path iconThemePath) : iconThemePath_(std::move(iconThemePath)) {}

void LinuxStatusBar::setActivateHandler(std::function<void(const StatusItemActivation&)> handler) {
  onActivate_ = std::move(handler);
}

std::unique_ptr<StatusItem> LinuxStatusBar::makeStatusItem() {
  // Counted for the whole process: a bus name and a connection's name are the process's, not the bar's.
  static int made = 0;
  return std::make_unique<LinuxStatusItem>(++made, QString::fromStdString(iconThemePath_.string()), onActivate_);
}

}  // namespace tollvane
