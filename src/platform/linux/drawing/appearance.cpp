#include "platform/linux/drawing/appearance.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace tollvane {
namespace {

constexpr auto portalService = "org.freedesktop.portal.Desktop";
constexpr auto portalPath = "/org/freedesktop/portal/desktop";
constexpr auto settingsInterface = "org.freedesktop.portal.Settings";
constexpr auto appearanceGroup = "org.freedesktop.appearance";
constexpr auto schemeKey = "color-scheme";

ColorScheme schemeOf(uint value) {
  return value == 1 ? ColorScheme::dark : value == 2 ? ColorScheme::light : ColorScheme::noPreference;
}

struct Tones {
  QRgb window, windowText, base, alternateBase, button, buttonText, brightText, light, midlight, mid, dark, shadow,
      placeholder, disabled;
};

constexpr Tones darkTones{.window = 0xff2b2b2b,
                          .windowText = 0xfff2f2f2,
                          .base = 0xff1f1f1f,
                          .alternateBase = 0xff262626,
                          .button = 0xff3a3a3a,
                          .buttonText = 0xfff2f2f2,
                          .brightText = 0xffff6b6b,
                          .light = 0xff505050,
                          .midlight = 0xff454545,
                          .mid = 0xff202020,
                          .dark = 0xff181818,
                          .shadow = 0xff000000,
                          .placeholder = 0xff9a9a9a,
                          .disabled = 0xff8a8a8a};

constexpr Tones lightTones{.window = 0xfff5f5f5,
                           .windowText = 0xff1f1f1f,
                           .base = 0xffffffff,
                           .alternateBase = 0xfff0f0f0,
                           .button = 0xffececec,
                           .buttonText = 0xff1f1f1f,
                           .brightText = 0xffb00020,
                           .light = 0xffffffff,
                           .midlight = 0xfff2f2f2,
                           .mid = 0xffb8b8b8,
                           .dark = 0xff9f9f9f,
                           .shadow = 0xff767676,
                           .placeholder = 0xff707070,
                           .disabled = 0xff8c8c8c};

bool isDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QPalette paletteOf(const Tones& tones, const QPalette& desktops) {
  QPalette palette = desktops;
  const std::pair<QPalette::ColorRole, QRgb> roles[] = {
      {QPalette::Window, tones.window},
      {QPalette::WindowText, tones.windowText},
      {QPalette::Base, tones.base},
      {QPalette::AlternateBase, tones.alternateBase},
      {QPalette::Text, tones.windowText},
      {QPalette::Button, tones.button},
      {QPalette::ButtonText, tones.buttonText},
      {QPalette::BrightText, tones.brightText},
      {QPalette::ToolTipBase, tones.button},
      {QPalette::ToolTipText, tones.windowText},
      {QPalette::Light, tones.light},
      {QPalette::Midlight, tones.midlight},
      {QPalette::Mid, tones.mid},
      {QPalette::Dark, tones.dark},
      {QPalette::Shadow, tones.shadow},
      {QPalette::PlaceholderText, tones.placeholder},
  };
  for (const auto& [role, color] : roles) palette.setColor(role, QColor::fromRgba(color));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, QColor::fromRgba(tones.disabled));
  // A link is drawn on the window's colour, so its colour must fit that and not the desktop's accent.
  palette.setColor(QPalette::Link, isDark(palette) ? QColor(0x7ab8ff) : QColor(0x0b57a4));
  return palette;
}

}  // namespace

ColorSchemeWatcher::ColorSchemeWatcher(QDBusConnection bus, std::function<void(ColorScheme)> onChange)
    : bus_(std::move(bus)),
      portal_(QString::fromLatin1(portalService), bus_, QDBusServiceWatcher::WatchForRegistration),
      onChange_(std::move(onChange)) {
  // QtDBus finds a slot by the names of its types. QDBusVariant has no name before its first use, and then the
  // connection would silently fail.
  qRegisterMetaType<QDBusVariant>();
  bus_.connect(QString::fromLatin1(portalService), QString::fromLatin1(portalPath),
               QString::fromLatin1(settingsInterface), QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
  connect(&portal_, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
  ask();
}

void ColorSchemeWatcher::ask() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(QString::fromLatin1(portalService), QString::fromLatin1(portalPath),
                                     QString::fromLatin1(settingsInterface), QStringLiteral("Read"));
  call << QString::fromLatin1(appearanceGroup) << QString::fromLatin1(schemeKey);
  call.setAutoStartService(false);
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    const QDBusPendingReply<QDBusVariant> answer = *finished;
    if (answer.isValid()) setColorScheme(answer.value().variant());
  });
}

void ColorSchemeWatcher::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  if (group == QLatin1String(appearanceGroup) && key == QLatin1String(schemeKey)) setColorScheme(value.variant());
}

void ColorSchemeWatcher::setColorScheme(const QVariant& value) {
  // Read() wraps its value into a second variant; the signal does not.
  const QVariant inner =
      value.metaType() == QMetaType::fromType<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
  const ColorScheme scheme = schemeOf(inner.toUInt());
  if (scheme != std::exchange(scheme_, scheme)) onChange_(scheme);
}

QPalette paletteFor(ColorScheme scheme, const QPalette& desktops) {
  if (scheme == ColorScheme::noPreference || (scheme == ColorScheme::dark) == isDark(desktops)) return desktops;
  return paletteOf(scheme == ColorScheme::dark ? darkTones : lightTones, desktops);
}

Appearance::Appearance(QDBusConnection bus)
    : desktops_(QApplication::palette()), watcher_(std::move(bus), [this](ColorScheme scheme) { dress(scheme); }) {}

void Appearance::dress(ColorScheme scheme) {
  const QPalette palette = paletteFor(scheme, desktops_);
  // An empty palette makes the toolkit use the desktop's again.
  QApplication::setPalette(palette == desktops_ ? QPalette() : palette);
}

}  // namespace tollvane
