// What the bell talks to, as simple objects that a test controls: a status notifier watcher that counts registrations,
// a desktop portal with one setting, and a listener for the item's signals. The bus is real.
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>

#include "tests/desktop/bell_fixture.h"

namespace tollvane::test {

class TestWatcher : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
  Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ answerItems)
  Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
  Q_PROPERTY(int ProtocolVersion READ protocolVersion)

 public:
  explicit TestWatcher(const PrivateDesktop& desktop) : bus_(desktop) {
    bus_->registerObject(
        QStringLiteral("/StatusNotifierWatcher"), this,
        QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    if (!bus_->registerService(QStringLiteral("org.kde.StatusNotifierWatcher"))) {
      throw std::runtime_error("the watcher's name is taken");
    }
  }

  QStringList answerItems() const {
    ++questions_;
    return items_;
  }
  QStringList items() const { return items_; }
  bool hasHost() const { return true; }
  int protocolVersion() const { return 0; }

  // How often an item was registered since the watcher was made.
  int registrations() const { return registrations_; }
  // How often the list of items was asked for.
  int questions() const { return questions_; }

  void forgetItems() { items_.clear(); }
  void announceHost() { Q_EMIT StatusNotifierHostRegistered(); }
  QDBusConnection& bus() { return *bus_; }

  // NOLINTBEGIN(readability-identifier-naming): names on the bus
 public Q_SLOTS:
  void RegisterStatusNotifierItem(const QString& service) {
    ++registrations_;
    items_.append(service + QStringLiteral("/StatusNotifierItem"));
    Q_EMIT StatusNotifierItemRegistered(items_.last());
  }

 Q_SIGNALS:
  void StatusNotifierItemRegistered(const QString& item);
  void StatusNotifierHostRegistered();
  // NOLINTEND(readability-identifier-naming)

 private:
  TestBus bus_;
  QStringList items_;
  int registrations_ = 0;
  mutable int questions_ = 0;
};

class TestPortal : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  TestPortal(const PrivateDesktop& desktop, uint colorScheme) : bus_(desktop), colorScheme_(colorScheme) {
    bus_->registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                         QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    bus_->registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }

  void changeTo(uint colorScheme) {
    colorScheme_ = colorScheme;
    Q_EMIT SettingChanged(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
                          QDBusVariant(colorScheme));
  }

  void changeAccent(double red, double green, double blue) {
    accent_ = {red, green, blue};
    Q_EMIT SettingChanged(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("accent-color"),
                          QDBusVariant(accent()));
  }

  void changeFont(const QString& font) {
    font_ = font;
    Q_EMIT SettingChanged(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("font-name"),
                          QDBusVariant(font));
  }

  void changeSomethingElse() {
    Q_EMIT SettingChanged(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("accent-color"),
                          QDBusVariant(2U));
  }

  // NOLINTBEGIN(readability-identifier-naming): names on the bus
 public Q_SLOTS:
  QDBusVariant Read(const QString&, const QString& key) {
    QVariant value = 99U;
    if (key == QLatin1String("color-scheme")) value = colorScheme_;
    if (key == QLatin1String("accent-color") && !accent_.empty()) value = accent();
    if (key == QLatin1String("font-name") && !font_.isEmpty()) value = font_;
    return QDBusVariant(QVariant::fromValue(QDBusVariant(value)));
  }

 Q_SIGNALS:
  void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
  // NOLINTEND(readability-identifier-naming)

 private:
  QVariant accent() const {
    QDBusArgument color;
    color.beginStructure();
    for (const double part : accent_) color << part;
    color.endStructure();
    return QVariant::fromValue(color);
  }

  TestBus bus_;
  uint colorScheme_;
  QList<double> accent_;
  QString font_;
};

// Counts the signals that the item sends.
class ItemSignals : public QObject {
  Q_OBJECT

 public:
  ItemSignals(QDBusConnection bus, const QString& service) {
    const auto listen = [&](const char* signal, const char* slot) {
      bus.connect(service, QStringLiteral("/StatusNotifierItem"), QStringLiteral("org.kde.StatusNotifierItem"),
                  QString::fromLatin1(signal), this, slot);
    };
    listen("NewIcon", SLOT(newIcon()));
    listen("NewToolTip", SLOT(newToolTip()));
    listen("NewTitle", SLOT(newOther()));
    listen("NewStatus", SLOT(newOther()));
  }

  int icons = 0;
  int toolTips = 0;
  int others = 0;

 private Q_SLOTS:
  void newIcon() { ++icons; }
  void newToolTip() { ++toolTips; }
  void newOther() { ++others; }
};

}  // namespace tollvane::test
