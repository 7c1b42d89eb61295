// Sees to it that the user has one Tollvane only. The first start owns a name on the session bus; a further one asks
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
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <string>

#include "platform/linux/workspace/activation_token.h"

namespace tollvane {

class SingleInstance : public QObject {
  Q_OBJECT

 public:
  static constexpr const char* busName = "com.quarnel.tollvane";
  static constexpr const char* objectPath = "/com/quarnel/tollvane";

  enum class Start {
    first,     // go on; also where there is no session bus, and nobody to ask
    another,   // the first one has come forward: nothing is left to do
    deadlock,  // there is a first one, and it does not answer
  };

  explicit SingleInstance(QDBusConnection bus);
  ~SingleInstance() override;

  // To be called once. Waits until the first one answers, as long as `patience`. `token`: the user's permission to come
  // forward.
  Start claim(const std::string& token, std::chrono::milliseconds patience = std::chrono::seconds(5));

  // The user has started the program once more.
  std::function<void(const std::string& token)> onReopen;

 private:
  bool ownsName();

  QDBusConnection bus_;
};

// The first instance as the bus sees it: what a second start, and a desktop that knows the entry's DBusActivatable, say
// to it. The SingleInstance makes it.
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
  // There is nothing that Tollvane could open, and no action but to come forward.
  void Open(const QStringList&, const QVariantMap& platformData) { Activate(platformData); }
  void ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) { Activate(platformData); }
  // NOLINTEND(readability-identifier-naming)

 private:
  SingleInstance* instance_;
};

}  // namespace tollvane
