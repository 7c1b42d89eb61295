#include "platform/linux/drawing/symbol_path.h"

#include <QLineF>
#include <QXmlStreamReader>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace tollvane {
namespace {

class PathReader {
 public:
  explicit PathReader(QStringView data) : rest_(data) {}

  QPainterPath read() {
    while (readCommand()) skipBlanks();
    return path_;
  }

 private:
  template <std::size_t count>
  std::optional<std::array<qreal, count>> numbers() {
    std::array<qreal, count> all{};
    for (qreal& each : all) {
      const auto next = number();
      if (!next) return std::nullopt;
      each = *next;
    }
    return all;
  }

  bool readCommand() {
    if (rest_.isEmpty()) return false;
    const char16_t command = rest_.front().unicode();
    rest_ = rest_.mid(1);
    switch (command) {
      case u'M':
        return draw<2>([this](const auto& to) { path_.moveTo(to[0], to[1]); });
      case u'L':
        return draw<2>([this](const auto& to) { path_.lineTo(to[0], to[1]); });
      case u'H':
        return draw<1>([this](const auto& to) { path_.lineTo(to[0], path_.currentPosition().y()); });
      case u'V':
        return draw<1>([this](const auto& to) { path_.lineTo(path_.currentPosition().x(), to[0]); });
      case u'C':
        return draw<6>([this](const auto& to) { path_.cubicTo(to[0], to[1], to[2], to[3], to[4], to[5]); });
      case u'A':
        return draw<7>([this](const auto& arc) { addArc(arc[0], arc[3] != 0, arc[4] != 0, {arc[5], arc[6]}); });
      case u'Z':
        path_.closeSubpath();
        return true;
      default:
        return false;
    }
  }

  // Reads so many numbers and draws with them. False, and nothing is drawn, if one is missing.
  template <std::size_t count, typename Draw>
  bool draw(Draw drawWith) {
    const auto read = numbers<count>();
    if (read) drawWith(*read);
    return read.has_value();
  }

  // From where the path is to `end`, on a circle of this radius, or on the smallest one that reaches `end`.
  void addArc(qreal radius, bool isLarge, bool isClockwise, QPointF end) {
    const QLineF chord(path_.currentPosition(), end);
    const qreal half = chord.length() / 2;
    if (half == 0) return;
    radius = std::max(radius, half);
    const qreal distance = std::sqrt(radius * radius - half * half) * (isLarge == isClockwise ? -1 : 1);
    const QPointF across(-chord.dy() / chord.length(), chord.dx() / chord.length());
    const QPointF center = chord.center() + across * distance;
    const qreal from = std::atan2(chord.y1() - center.y(), chord.x1() - center.x());
    qreal sweep = std::atan2(chord.y2() - center.y(), chord.x2() - center.x()) - from;
    if (isClockwise && sweep < 0) sweep += 2 * M_PI;
    if (!isClockwise && sweep > 0) sweep -= 2 * M_PI;
    // Curves of equal length, none longer than a quarter. The toolkit's own are longer and shorter ones, so that an arc
    // and its mirror image differ.
    const int count = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / M_PI_2 - 0.001)));
    const qreal handle = radius * 4 / 3 * std::tan(sweep / count / 4);
    for (int part = 1; part <= count; ++part) {
      const qreal before = from + sweep * (part - 1) / count;
      const qreal after = from + sweep * part / count;
      const QPointF there = part == count ? end : center + radius * QPointF(std::cos(after), std::sin(after));
      path_.cubicTo(path_.currentPosition() + handle * QPointF(-std::sin(before), std::cos(before)),
                    there - handle * QPointF(-std::sin(after), std::cos(after)), there);
    }
  }

  void skipBlanks() {
    while (!rest_.isEmpty() && (rest_.front().isSpace() || rest_.front() == u',')) rest_ = rest_.mid(1);
  }

  std::optional<qreal> number() {
    skipBlanks();
    qsizetype length = 0;
    bool hasPoint = false;
    for (; length < rest_.size(); ++length) {
      const QChar at = rest_[length];
      if (at == u'-' ? length > 0 : at == u'.' ? hasPoint : at < u'0' || at > u'9') break;
      hasPoint = hasPoint || at == u'.';
    }
    bool isNumber = false;
    const qreal value = rest_.first(length).toDouble(&isNumber);
    rest_ = rest_.mid(length);
    return isNumber ? std::optional(value) : std::nullopt;
  }

  QStringView rest_;
  QPainterPath path_;
};

}  // namespace

QPainterPath pathOfData(QStringView data) { return PathReader(data).read(); }

QPainterPath symbolPath(const QByteArray& svg) {
  QPainterPath all;
  for (QXmlStreamReader reader(svg); !reader.atEnd();) {
    if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() != u"path") continue;
    all.addPath(pathOfData(reader.attributes().value(QLatin1String("d"))));
  }
  return all;  // a QPainterPath fills by the odd-even rule
}

}  // namespace tollvane
