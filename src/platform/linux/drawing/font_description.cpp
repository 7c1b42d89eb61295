#include "platform/linux/drawing/font_description.h"

#include <QStringList>
#include <array>
#include <utility>

namespace tollvane {
namespace {

constexpr double smallest = 4;
constexpr double largest = 100;

// False if the text is not a size.
bool takeSize(QString text, QFont& font) {
  const bool inPixels = text.endsWith(QLatin1String("px"));
  if (inPixels) text.chop(2);
  bool isNumber = false;
  const double size = text.toDouble(&isNumber);
  if (!isNumber || !(size >= smallest && size <= largest)) return false;
  inPixels ? font.setPixelSize(qRound(size)) : font.setPointSizeF(size);
  return true;
}

// False if the word is a part of the family's name.
bool takeStyle(const QString& word, QFont& font) {
  constexpr std::array<std::pair<const char*, QFont::Weight>, 17> weights = {{
      {"thin", QFont::Thin},
      {"ultra-light", QFont::ExtraLight},
      {"extra-light", QFont::ExtraLight},
      {"light", QFont::Light},
      {"semi-light", QFont::Light},
      {"demi-light", QFont::Light},
      {"book", QFont::Normal},
      {"regular", QFont::Normal},
      {"normal", QFont::Normal},
      {"roman", QFont::Normal},
      {"medium", QFont::Medium},
      {"semi-bold", QFont::DemiBold},
      {"demi-bold", QFont::DemiBold},
      {"bold", QFont::Bold},
      {"ultra-bold", QFont::ExtraBold},
      {"extra-bold", QFont::ExtraBold},
      {"heavy", QFont::Black},
  }};
  const QString lower = word.toLower();
  for (const auto& [name, weight] : weights) {
    const QString latin = QString::fromLatin1(name);
    if (lower != latin && lower != QString(latin).remove(u'-')) continue;
    font.setWeight(weight);
    return true;
  }
  if (lower == QLatin1String("black")) {
    font.setWeight(QFont::Black);
  } else if (lower == QLatin1String("italic") || lower == QLatin1String("oblique")) {
    font.setItalic(true);
  } else if (lower == QLatin1String("condensed")) {
    font.setStretch(QFont::Condensed);
  } else {
    return false;
  }
  return true;
}

}  // namespace

std::optional<QFont> fontFromDescription(std::string_view description) {
  QStringList words =
      QString::fromUtf8(description.data(), static_cast<qsizetype>(description.size())).split(u' ', Qt::SkipEmptyParts);
  QFont font;
  if (words.isEmpty() || !takeSize(words.takeLast(), font)) return std::nullopt;
  // A comma ends the list of families, so "Arial Black," is a family, and "Arial Black" is one with a weight.
  while (!words.isEmpty() && !words.last().endsWith(u',') && takeStyle(words.last(), font)) words.removeLast();
  QStringList families = words.join(u' ').split(u',', Qt::SkipEmptyParts);
  for (QString& family : families) family = family.trimmed();
  families.removeAll(QString());
  if (families.isEmpty()) return std::nullopt;
  font.setFamilies(families);
  return font;
}

}  // namespace tollvane
