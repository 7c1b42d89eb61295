// Makes sure that the user has only one Tollvane. The first instance owns a name on the session bus; a later one asks
// the first to come forward, and ends.
//
//   SingleInstance instance(QDBusConnection::sessionBus());
//   switch (instance.claim(token)) { ... }
//   instance.onReopen = [&](const std::string& token) { ... };
//
// Main thread only; needs a QCoreApplication.
// Source: freedesktop.org, Desktop Entry 1.5 (D-Bus Activation).
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/linux/workspace/activation_token.h"
#include "platform/process_table.h"

namespace tollvane {

class SingleInstance : public QObject {
  Q_OBJECT

 public:
  static constexpr QLatin1String busName{"com.quarnel.tollvane"};
  static constexpr QLatin1String objectPath{"/com/quarnel/tollvane"};

  static constexpr QLatin1String showMenu{"show-recent-sounds"};  // the action of org.freedesktop.Application

  enum class Wish { comeForward, showMenu };

  enum class Start {
    first,     // go on; also if there is no session bus to ask
    another,   // another instance has done what was asked for: nothing is left to do
    refused,   // another instance cannot show its menu: the desktop opens it, and nobody else
    deadlock,  // there is another instance, but it does not answer
  };

  explicit SingleInstance(QDBusConnection bus);
  ~SingleInstance() override;

  // To be called once. Waits up to `patience` for the first instance to answer. `token`: the user's permission to come
  // forward. The first instance is asked to come forward, or to show its menu.
  Start claim(const std::string& token, Wish wish = Wish::comeForward,
              std::chrono::milliseconds patience = std::chrono::seconds(5));

  // Called when the user has started the program once more.
  std::function<void(const std::string& token)> onReopen;

  // Called when the user wants to see the menu without a click on the bell; false if it cannot be shown.
  std::function<bool(const std::string& token)> onShowMenu;

  // Returns what the program says about itself, as JSON.
  std::function<std::string()> onState;

  QDBusConnection bus() const { return bus_; }

 private:
  bool ownsName();

  QDBusConnection bus_;
};

// The first instance as the bus sees it. A second start calls it, and so does a desktop that knows the entry's
// DBusActivatable. SingleInstance makes it.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationAdaptor(SingleInstance* instance) : QDBusAbstractAdaptor(instance), instance_(instance) {}

  // NOLINTBEGIN(readability-identifier-naming): the protocol's names
 public Q_SLOTS:
  void Activate(const QVariantMap& platformData) {
    if (instance_->onReopen) instance_->onReopen(tokenOf(platformData));
  }
  // Tollvane cannot open anything. An action that it does not know makes it come forward.
  void Open(const QStringList&, const QVariantMap& platformData) { Activate(platformData); }
  void ActivateAction(const QString& name, const QVariantList&, const QVariantMap& platformData,
                      const QDBusMessage& message);
  // NOLINTEND(readability-identifier-naming)

 private:
  SingleInstance* instance_;
};

// What the doctor asks the first instance.
class StateAdaptor : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.quarnel.tollvane.State")

 public:
  explicit StateAdaptor(SingleInstance* instance) : QDBusAbstractAdaptor(instance), instance_(instance) {}

 public Q_SLOTS:
  QString Describe() {  // NOLINT(readability-identifier-naming): the bus's style
    return instance_->onState ? QString::fromStdString(instance_->onState()) : QString();
  }

 private:
  SingleInstance* instance_;
};

// The first instance as another program sees it, which asks about it or ends it.
struct FirstInstance {
  Pid pid = 0;

  // Absent if Tollvane does not run.
  static std::optional<FirstInstance> find(const QDBusConnection& bus);

  // What it says about itself; empty if it does not answer.
  static std::string state(const QDBusConnection& bus);

  // Asks it to end, and waits until its name is gone. False if it is still there.
  bool end(const QDBusConnection& bus, std::chrono::milliseconds patience = std::chrono::seconds(5)) const;
};

}  // namespace tollvane
