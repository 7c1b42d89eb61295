// The first instance as the bus sees it: what a second start, and a desktop that knows the entry's DBusActivatable,
// say to it. Made by the SingleInstance.
#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include "platform/linux/desktop/platform_data.h"
#include "platform/linux/desktop/single_instance.h"

namespace tollvane {

class ApplicationAdaptor : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationAdaptor(SingleInstance* instance) : QDBusAbstractAdaptor(instance), instance_(instance) {}

 public Q_SLOTS:
  void Activate(const QVariantMap& platformData) {
    if (instance_->onReopen) instance_->onReopen(tokenOf(platformData));
  }
  // There is nothing that Tollvane could open, and no action but to come forward.
  void Open(const QStringList&, const QVariantMap& platformData) { Activate(platformData); }
  void ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) { Activate(platformData); }

 private:
  SingleInstance* instance_;
};

}  // namespace tollvane
