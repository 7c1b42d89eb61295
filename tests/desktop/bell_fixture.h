// What the tests of the bell share: the bell as a program, and its status item as seen over the bus.
// One thread, which has a QCoreApplication.
#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QVariant>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/linux/bell/bus_types.h"
#include "tests/support/private_desktop.h"
#include "tests/support/process.h"

namespace tollvane::test {

// Like waitUntil(), but the test's own objects on the bus answer calls meanwhile.
inline bool waitUntilOnTheBus(const std::function<bool()>& condition) {
  return waitUntil(
      [&] {
        QCoreApplication::processEvents();
        return condition();
      },
      desktopPatience);
}

// A connection to the desktop's bus for one object of the test alone. It is closed with the object.
class TestBus {
 public:
  explicit TestBus(const PrivateDesktop& desktop)
      : name_(QStringLiteral("test-%1").arg(nextNumber())),
        bus_(QDBusConnection::connectToBus(QString::fromStdString(desktop.busAddress()), name_)) {
    if (!bus_.isConnected()) throw std::runtime_error("no connection to the private bus");
  }
  ~TestBus() { QDBusConnection::disconnectFromBus(name_); }
  TestBus(const TestBus&) = delete;
  TestBus& operator=(const TestBus&) = delete;

  QDBusConnection& operator*() { return bus_; }
  QDBusConnection* operator->() { return &bus_; }

 private:
  static int nextNumber() {
    static int last = 0;
    return ++last;
  }

  QString name_;
  QDBusConnection bus_;
};

// The bell, running as a process in the desktop.
class Bell {
 public:
  explicit Bell(PrivateDesktop& desktop, const Variables& extra = {})
      : program_(desktop.start({TOLLVANE_PROBES "/bell_probe", TOLLVANE_BUNDLE "/icons"}, extra)) {}

  // Sends a command to the bell and waits until it is done. The test's own objects on the bus answer calls meanwhile.
  void tell(std::string_view line) {
    ++told_;
    program_->writeLine(line);
    if (!waitUntilOnTheBus([this] { return count("obeyed\n") == told_; })) {
      throw std::runtime_error("the bell does not obey: " + std::string(line));
    }
  }

  bool printed(std::string_view text) { return program_->printed().find(text) != std::string::npos; }
  Process& program() { return *program_; }
  QString service() const { return QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(program_->pid()); }

 private:
  int count(std::string_view text) {
    int found = 0;
    for (std::size_t at = 0; (at = program_->printed().find(text, at)) != std::string::npos; at += text.size()) ++found;
    return found;
  }

  std::unique_ptr<Process> program_;
  int told_ = 0;
};

// The status item of a bell, seen over the bus, as a bar sees it.
class ItemOnTheBus {
 public:
  ItemOnTheBus(QDBusConnection bus, QString service) : bus_(std::move(bus)), service_(std::move(service)) {
    registerBusTypes();
  }

  QVariant property(const char* name) const {
    const QDBusMessage reply = call("org.freedesktop.DBus.Properties", "Get",
                                    {QStringLiteral("org.kde.StatusNotifierItem"), QString::fromLatin1(name)});
    return reply.arguments().isEmpty() ? QVariant() : reply.arguments().first().value<QDBusVariant>().variant();
  }

  std::string text(const char* name) const { return property(name).toString().toStdString(); }
  IconPixmaps pixmaps() const { return qdbus_cast<IconPixmaps>(property("IconPixmap")); }
  ToolTip toolTip() const { return qdbus_cast<ToolTip>(property("ToolTip")); }

  QDBusMessage call(const char* interface, const char* method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(service_, QStringLiteral("/StatusNotifierItem"),
                                                          QString::fromLatin1(interface), QString::fromLatin1(method));
    message.setArguments(arguments);
    return bus_.call(message, QDBus::Block, 5000);
  }

  QDBusMessage invoke(const char* method, const QVariantList& arguments) const {
    return call("org.kde.StatusNotifierItem", method, arguments);
  }

 private:
  QDBusConnection bus_;
  QString service_;
};

}  // namespace tollvane::test
