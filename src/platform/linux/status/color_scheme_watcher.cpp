#include "platform/linux/status/color_scheme_watcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace tollvane {
namespace {

constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kGroup = "org.freedesktop.appearance";
constexpr auto kKey = "color-scheme";

ColorScheme schemeOf(uint value) {
  return value == 1 ? ColorScheme::dark : value == 2 ? ColorScheme::light : ColorScheme::noPreference;
}

}  // namespace

ColorSchemeWatcher::ColorSchemeWatcher(QDBusConnection bus, std::function<void(ColorScheme)> onChange)
    : bus_(std::move(bus)),
      portal_(QString::fromLatin1(kService), bus_, QDBusServiceWatcher::WatchForRegistration),
      onChange_(std::move(onChange)) {
  // A slot is found by the names of its types, and this one has none before somebody uses it; the connection would
  // fail without a word.
  qRegisterMetaType<QDBusVariant>();
  bus_.connect(QString::fromLatin1(kService), QString::fromLatin1(kPath), QString::fromLatin1(kInterface),
               QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QString, QString, QDBusVariant)));
  connect(&portal_, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
  ask();
}

void ColorSchemeWatcher::ask() {
  QDBusMessage call = QDBusMessage::createMethodCall(QString::fromLatin1(kService), QString::fromLatin1(kPath),
                                                     QString::fromLatin1(kInterface), QStringLiteral("Read"));
  call << QString::fromLatin1(kGroup) << QString::fromLatin1(kKey);
  call.setAutoStartService(false);
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    const QDBusPendingReply<QDBusVariant> answer = *finished;
    if (answer.isValid()) {
      setColorScheme(answer.value().variant());
    }
  });
}

void ColorSchemeWatcher::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  if (group == QLatin1String(kGroup) && key == QLatin1String(kKey)) {
    setColorScheme(value.variant());
  }
}

void ColorSchemeWatcher::setColorScheme(const QVariant& value) {
  // Read() wraps its value into a second variant; the signal does not.
  const QVariant inner =
      value.metaType() == QMetaType::fromType<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
  const ColorScheme scheme = schemeOf(inner.toUInt());
  if (scheme != scheme_) {
    scheme_ = scheme;
    onChange_(scheme);
  }
}

}  // namespace tollvane
