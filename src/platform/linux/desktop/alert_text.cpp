#include "platform/linux/desktop/alert_text.h"

#include <QTextBoundaryFinder>
#include <algorithm>

#include "platform/linux/status/plain_text.h"

namespace tollvane {
namespace {

// A character may be followed by any number of marks that belong to it.
constexpr qsizetype unitsPerCharacter = 8;

// Where the first `count` characters end.
qsizetype endOf(const QString& text, qsizetype count) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  qsizetype end = 0;
  for (qsizetype i = 0; i < count; ++i) {
    const qsizetype next = finder.toNextBoundary();
    if (next < 0) break;
    end = next;
  }
  return std::min(end, count * unitsPerCharacter);
}

// Where the last `count` characters begin.
qsizetype startOf(const QString& text, qsizetype count) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  finder.toEnd();
  qsizetype start = text.size();
  for (qsizetype i = 0; i < count; ++i) {
    const qsizetype previous = finder.toPreviousBoundary();
    if (previous < 0) break;
    start = previous;
  }
  return std::max(start, text.size() - count * unitsPerCharacter);
}

}  // namespace

QString alertText(std::string_view text, qsizetype most) {
  // Of a megabyte only the ends are looked at.
  const auto longest = static_cast<std::size_t>(most * unitsPerCharacter * 4);
  QString line;
  if (text.size() > 2 * longest)
    line = withoutControls(QString::fromUtf8(text.data(), static_cast<qsizetype>(longest))) +
           withoutControls(QString::fromUtf8(text.data() + text.size() - longest, static_cast<qsizetype>(longest)));
  else
    line = withoutControls(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));

  if (endOf(line, most) >= line.size()) return line;
  qsizetype head = endOf(line, most / 2);
  qsizetype tail = startOf(line, most - most / 2 - 1);
  if (head >= tail) return line;
  if (line[head - 1].isHighSurrogate()) --head;
  if (line[tail].isLowSurrogate()) ++tail;
  return line.left(head) + QChar(u'…') + line.mid(tail);
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
      result.append(QChar(0x200B));
      word = 1;
    }
    result.append(QStringView(line).mid(start, end - start));
  }
  return result;
}

}  // namespace tollvane
