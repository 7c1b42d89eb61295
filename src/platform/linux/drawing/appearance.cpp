#include "platform/linux/drawing/appearance.h"

#include <QApplication>
#include <QDBusArgument>
#include <QRegularExpression>
#include <utility>

#include "platform/linux/drawing/contrast.h"
#include "platform/linux/drawing/font_description.h"

namespace tollvane {
namespace {

QString appearanceGroup() { return QStringLiteral("org.freedesktop.appearance"); }

// What desktops let people choose.
constexpr double leastTextScale = 0.5;
constexpr double mostTextScale = 3;

// Whether the toolkit gets its look elsewhere: from a plug-in that the user has chosen instead of the desktop's, or
// from Plasma.
bool isDressedByOthers() {
  const QByteArray plugin = qgetenv("QT_QPA_PLATFORMTHEME");
  const bool isDesktops = plugin.isEmpty() || plugin == "gtk2" || plugin == "gtk3" || plugin == "gnome";
  return !isDesktops || qgetenv("XDG_CURRENT_DESKTOP").split(':').contains("KDE");
}

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

ColorSchemeWatcher::ColorSchemeWatcher(const QDBusConnection& bus, std::function<void(ColorScheme)> onChange)
    : onChange_(std::move(onChange)),
      setting_(bus, appearanceGroup(), QStringLiteral("color-scheme"),
               [this](const QVariant& value) { setColorScheme(schemeOf(value.toUInt())); }) {}

void ColorSchemeWatcher::setColorScheme(ColorScheme scheme) {
  if (scheme != std::exchange(scheme_, scheme)) onChange_(scheme);
}

QPalette paletteFor(ColorScheme scheme, const QPalette& desktops) {
  if (scheme == ColorScheme::noPreference || (scheme == ColorScheme::dark) == isDark(desktops)) return desktops;
  return paletteOf(scheme == ColorScheme::dark ? darkTones : lightTones, desktops);
}

std::optional<QColor> accentOf(const QVariant& value) {
  if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return std::nullopt;
  const auto argument = value.value<QDBusArgument>();
  if (argument.currentSignature() != QLatin1String("(ddd)")) return std::nullopt;
  double red = 0, green = 0, blue = 0;
  argument.beginStructure();
  argument >> red >> green >> blue;
  argument.endStructure();
  // What is out of range means that there is no such colour.
  for (const double part : {red, green, blue})
    if (!(part >= 0 && part <= 1)) return std::nullopt;
  return QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue));
}

ColorScheme schemeOfTheme(std::string_view name) {
  const QString lower = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())).toLower();
  if (lower.isEmpty()) return ColorScheme::noPreference;
  for (const QString& word : lower.split(QRegularExpression(QStringLiteral("[^a-z]+"))))
    if (word == QLatin1String("dark")) return ColorScheme::dark;
  return ColorScheme::noPreference;
}

QPalette withAccent(QPalette palette, const QColor& accent) {
  const QColor ink = contrast(Qt::white, accent) >= visibleContrast ? Qt::white : Qt::black;
  palette.setColor(QPalette::Highlight, accent);
  palette.setColor(QPalette::HighlightedText, ink);
  return palette;
}

Appearance::Appearance(const QDBusConnection& bus)
    : desktops_(QApplication::palette()),
      watcher_(bus, [this](ColorScheme) { dress(); }),
      accentSetting_(bus, appearanceGroup(), QStringLiteral("accent-color"),
                     [this](const QVariant& value) { setAccent(value); }),
      fontSetting_(bus, QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("font-name"),
                   [this](const QVariant& value) {
                     fontOfPortal_ = value.toString().toStdString();
                     dressWithPortalsFont();
                   }),
      scaleSetting_(bus, QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("text-scaling-factor"),
                    [this](const QVariant& value) {
                      const double scale = value.toDouble();
                      textScale_ = scale >= leastTextScale && scale <= mostTextScale ? scale : 1;
                      dressWithPortalsFont();
                    }) {
  followX11();
}

void Appearance::dress() {
  const ColorScheme scheme = watcher_.scheme() == ColorScheme::noPreference ? themes_ : watcher_.scheme();
  QPalette palette = paletteFor(scheme, desktops_);
  if (accent_) palette = withAccent(palette, *accent_);
  // An empty palette makes the toolkit use the desktop's again.
  QApplication::setPalette(palette == desktops_ ? QPalette() : palette);
}

void Appearance::setAccent(const QVariant& value) {
  accent_ = accentOf(value);
  dress();
}

// On X11 the desktop's shared settings are nearer: they say what its own panel uses.
void Appearance::dressWithPortalsFont() {
  if (!hasX11Settings_ && !fontOfPortal_.empty()) setFont(fontOfPortal_, textScale_);
}

void Appearance::setFont(std::string_view description, double scale) {
  if (isDressedByOthers()) return;
  auto font = fontFromDescription(description);
  if (font && font->pointSizeF() > 0) font->setPointSizeF(font->pointSizeF() * scale);
  if (font && *font != QApplication::font()) QApplication::setFont(*font);
}

void Appearance::followX11() {
  if (isDressedByOthers() || QGuiApplication::platformName() != QLatin1String("xcb")) return;
  x11_ = std::make_unique<XSettingsWatch>();
  readX11();
  if (x11_->descriptor() < 0) return;
  x11Changes_ = std::make_unique<QSocketNotifier>(x11_->descriptor(), QSocketNotifier::Read);
  QObject::connect(x11Changes_.get(), &QSocketNotifier::activated, x11Changes_.get(), [this] {
    while (x11_->takeChanges()) readX11();  // an answer may have brought further events along
    if (!x11_->isAlive()) x11Changes_->setEnabled(false);
  });
}

void Appearance::readX11() {
  const auto settings = x11_->read();
  hasX11Settings_ = settings.has_value();
  if (!settings) return;
  setFont(settings->fontName);
  themes_ = schemeOfTheme(settings->themeName);
  dress();
}

}  // namespace tollvane
