#include "platform/linux/status/appearance.h"

#include <QApplication>
#include <utility>

namespace tollvane {
namespace {

struct Tones {
  QRgb window, windowText, base, alternateBase, button, buttonText, brightText, light, midlight, mid, dark, shadow,
      placeholder, disabled;
};

constexpr Tones kDark{.window = 0xff2b2b2b,
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

constexpr Tones kLight{.window = 0xfff5f5f5,
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
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, QColor::fromRgba(tones.disabled));
  }
  // A link stands on the window, so it goes with the window and not with the desktop's accent.
  palette.setColor(QPalette::Link, isDark(palette) ? QColor(0x7ab8ff) : QColor(0x0b57a4));
  return palette;
}

}  // namespace

QPalette paletteFor(ColorScheme scheme, const QPalette& desktops) {
  if (scheme == ColorScheme::noPreference || (scheme == ColorScheme::dark) == isDark(desktops)) return desktops;
  return paletteOf(scheme == ColorScheme::dark ? kDark : kLight, desktops);
}

Appearance::Appearance(QDBusConnection bus)
    : desktops_(QApplication::palette()), watcher_(std::move(bus), [this](ColorScheme scheme) { dress(scheme); }) {}

void Appearance::dress(ColorScheme scheme) {
  const QPalette palette = paletteFor(scheme, desktops_);
  // An empty palette gives the toolkit back to the desktop.
  QApplication::setPalette(palette == desktops_ ? QPalette() : palette);
}

}  // namespace tollvane
