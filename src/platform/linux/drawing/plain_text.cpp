#include "platform/linux/drawing/plain_text.h"

#include <QChar>
#include <QTextBoundaryFinder>
#include <algorithm>

#include "support/text.h"

namespace tollvane {
namespace {

constexpr qsizetype longestLine = 300;  // characters
constexpr qsizetype longestToolTip = 160;

// A user-perceived character may have any number of combining marks, so a limit for characters alone limits nothing.
constexpr qsizetype unitsPerCharacter = 8;
constexpr qsizetype bytesPerCharacter = 4 * unitsPerCharacter;

QString fromUtf8(std::string_view text) { return QString::fromStdString(text::withoutControls(text)); }

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

bool partsAPair(const QString& text, qsizetype at) {
  return at > 0 && at < text.size() && text[at].isLowSurrogate() && text[at - 1].isHighSurrogate();
}

// Where the first `count` characters end, or fewer of them if they have too many marks. If the first character alone
// has too many, it is cut.
qsizetype endOf(const QString& text, qsizetype count) {
  const qsizetype limit = count * unitsPerCharacter;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  qsizetype end = 0;
  for (qsizetype i = 0; i < count; ++i) {
    const qsizetype next = finder.toNextBoundary();
    if (next < 0 || next > limit) break;
    end = next;
  }
  if (end > 0 || text.isEmpty()) return end;
  return partsAPair(text, limit) ? limit - 1 : std::min(limit, text.size());
}

// The same from the end of the text: where the last `count` characters begin.
qsizetype startOf(const QString& text, qsizetype count) {
  const qsizetype limit = text.size() - count * unitsPerCharacter;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  finder.toEnd();
  qsizetype start = text.size();
  for (qsizetype i = 0; i < count; ++i) {
    const qsizetype previous = finder.toPreviousBoundary();
    if (previous < 0 || previous < limit) break;
    start = previous;
  }
  if (start < text.size()) return start;
  return partsAPair(text, limit) ? limit + 1 : std::max<qsizetype>(limit, 0);
}

}  // namespace

QString plainLine(std::string_view text) {
  // The bytes are cut first, so that a very long text is not walked character by character. Half a character at the cut
  // becomes U+FFFD, far behind the part that is kept.
  constexpr std::size_t mostBytes = longestLine * bytesPerCharacter;
  QString plain = fromUtf8(text.substr(0, mostBytes));
  const qsizetype end = endOf(plain, longestLine);
  if (end < plain.size() || text.size() > mostBytes) plain = plain.left(end) + ellipsis;
  return plain;
}

std::string plainToolTip(std::string_view text) {
  QString plain = shortenedInside(text, longestToolTip);
  for (QChar& character : plain) character = QChar(lookAlike(character.unicode()));
  return plain.toStdString();
}

QString shortenedInside(std::string_view text, qsizetype most) {
  // Of a very long text only the two ends are read.
  const auto longest = static_cast<std::size_t>(most * bytesPerCharacter);
  QString line = text.size() > 2 * longest
                     ? fromUtf8(text.substr(0, longest)) + fromUtf8(text.substr(text.size() - longest))
                     : fromUtf8(text);
  if (endOf(line, most) >= line.size()) return line;
  const qsizetype head = endOf(line, most / 2);
  const qsizetype tail = startOf(line, most - most / 2 - 1);
  return head < tail ? line.left(head) + ellipsis + line.mid(tail) : line;
}

QString breakable(const QString& line) {
  constexpr int longestWord = 32;
  QString result;
  int word = 0;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, line);
  qsizetype start = 0;
  for (qsizetype end = finder.toNextBoundary(); end >= 0; start = end, end = finder.toNextBoundary()) {
    word = line[start].isSpace() ? 0 : word + 1;
    if (word > longestWord) {
      result.append(zeroWidthSpace);
      word = 1;
    }
    result.append(QStringView(line).mid(start, end - start));
  }
  return result;
}

}  // namespace tollvane
