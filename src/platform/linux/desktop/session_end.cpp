#include "platform/linux/desktop/session_end.h"

#include <QGuiApplication>
#include <QSessionManager>

namespace tollvane {

SessionEnd::SessionEnd(QDBusConnection bus) {
  // The next session starts the program by its autostart entry, and must not start a second one by its own memory.
  connect(qGuiApp, &QGuiApplication::commitDataRequest, this,
          [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
  bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"), QStringLiteral("org.freedesktop.DBus.Local"),
              QStringLiteral("Disconnected"), this, SLOT(busIsGone()));
}

void SessionEnd::busIsGone() { QCoreApplication::quit(); }

}  // namespace tollvane
