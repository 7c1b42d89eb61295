#include "platform/linux/drawing/portal_setting.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace tollvane {
namespace {

constexpr auto portalService = "org.freedesktop.portal.Desktop";
constexpr auto portalPath = "/org/freedesktop/portal/desktop";
constexpr auto settingsInterface = "org.freedesktop.portal.Settings";

}  // namespace

PortalSetting::PortalSetting(QDBusConnection bus, QString group, QString key,
                             std::function<void(const QVariant&)> onValue)
    : bus_(std::move(bus)),
      portal_(QString::fromLatin1(portalService), bus_, QDBusServiceWatcher::WatchForRegistration),
      group_(std::move(group)),
      key_(std::move(key)),
      onValue_(std::move(onValue)) {
  // QtDBus finds a slot by the names of its types. QDBusVariant has no name before its first use, and then the
  // connection would silently fail.
  qRegisterMetaType<QDBusVariant>();
  bus_.connect(QString::fromLatin1(portalService), QString::fromLatin1(portalPath),
               QString::fromLatin1(settingsInterface), QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
  connect(&portal_, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
  ask();
}

void PortalSetting::ask() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(QString::fromLatin1(portalService), QString::fromLatin1(portalPath),
                                     QString::fromLatin1(settingsInterface), QStringLiteral("Read"));
  call << group_ << key_;
  call.setAutoStartService(false);
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    const QDBusPendingReply<QDBusVariant> answer = *finished;
    if (answer.isValid()) tell(answer.value().variant());
  });
}

void PortalSetting::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  if (group == group_ && key == key_) tell(value.variant());
}

// Read() wraps its value into a second variant; the signal does not.
void PortalSetting::tell(const QVariant& value) {
  onValue_(value.metaType() == QMetaType::fromType<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value);
}

}  // namespace tollvane
