#include "platform/linux/status/plain_text.h"

#include <QChar>
#include <QTextBoundaryFinder>

namespace tollvane {
namespace {

constexpr int kMaxCharacters = 300;
// One user-perceived character may carry any number of combining marks, so counting characters alone bounds nothing.
constexpr qsizetype kMaxUnits = 2400;
constexpr qsizetype kMaxBytes = 4 * kMaxUnits;
constexpr char16_t kEllipsis = u'\u2026';

bool isBidiControl(char16_t unit) {
  return unit == u'\u061C' || unit == u'\u200E' || unit == u'\u200F' || (unit >= u'\u202A' && unit <= u'\u202E') ||
         (unit >= u'\u2066' && unit <= u'\u2069');
}

bool isBlank(char16_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == u'\u2028' || unit == u'\u2029';
}

char16_t lookAlike(char16_t unit) {
  switch (unit) {
    case u'<':
      return u'\u2039';
    case u'>':
      return u'\u203A';
    case u'&':
      return u'\uFF06';
    default:
      return unit;
  }
}

// Where the text has to be cut; its whole length when it is short enough.
qsizetype cutAt(const QString& text) {
  if (text.size() <= kMaxCharacters) {
    return text.size();
  }
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  qsizetype end = 0;
  for (int characters = 0; characters < kMaxCharacters; ++characters) {
    const qsizetype next = finder.toNextBoundary();
    if (next < 0 || next > kMaxUnits) {
      break;
    }
    end = next;
  }
  if (end == 0) {  // a single character that is too long by itself
    end = text.at(kMaxUnits - 1).isHighSurrogate() ? kMaxUnits - 1 : kMaxUnits;
  }
  return end;
}

}  // namespace

QString withoutControls(const QString& text) {
  QString plain;
  plain.reserve(text.size());
  for (const QChar character : text) {
    if (!isBidiControl(character.unicode())) {
      plain.append(isBlank(character.unicode()) ? QChar(u' ') : character);
    }
  }
  return plain;
}

QString plainLine(std::string_view text) {
  // Cut the bytes first: a caller's megabyte must not be walked character by character. Half a character at the cut
  // decodes to U+FFFD, far behind the part that is kept.
  const bool cutBytes = text.size() > static_cast<std::size_t>(kMaxBytes);
  QString plain =
      withoutControls(QString::fromUtf8(text.data(), cutBytes ? kMaxBytes : static_cast<qsizetype>(text.size())));
  const qsizetype end = cutAt(plain);
  if (end < plain.size() || cutBytes) {
    plain.truncate(end);
    plain.append(QChar(kEllipsis));
  }
  return plain;
}

std::string plainToolTip(std::string_view text) {
  QString plain = plainLine(text);
  for (QChar& character : plain) {
    character = QChar(lookAlike(character.unicode()));
  }
  return plain.toStdString();
}

}  // namespace tollvane
