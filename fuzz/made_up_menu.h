// Menus and calls that are made up from the bytes of an input.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/fuzz.h"
#include "platform/menu.h"
#include "platform/status_item.h"

namespace tollvane {

// Gives out the bytes of the input, and zeros after them.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool none() const { return at_ >= size_; }
  int next() { return none() ? 0 : data_[at_++]; }
  // Mostly a small number, as items have.
  int number() {
    const int first = next();
    return first < 250 ? first - 3
                       : static_cast<int>(static_cast<unsigned>(next()) << 24 | static_cast<unsigned>(next()));
  }
  QList<int> numbers() {
    QList<int> all;
    for (int count = next() % 8; count > 0; --count) all.append(number());
    return all;
  }
  QString name() {
    static const char* const known[] = {"clicked", "opened",  "closed", "hovered",
                                        "label",   "enabled", "type",   "visible"};
    const int first = next();
    if (first < 200) return QString::fromLatin1(known[first % 8]);
    QByteArray bytes;
    for (int count = first - 200; count > 0; --count) bytes.append(static_cast<char>(next()));
    return QString::fromUtf8(bytes);
  }
  QStringList names() {
    QStringList all;
    for (int count = next() % 4; count > 0; --count) all.append(name());
    return all;
  }
  std::string text() { return name().toStdString(); }
  // Not always text.
  std::string bytes() {
    std::string made;
    for (int count = next() % 32; count > 0; --count) made += static_cast<char>(next());
    return made;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

// A menu whose items come from the input, others at each question.
class MadeUpMenu : public MenuDelegate {
 public:
  explicit MadeUpMenu(Bytes& bytes) : bytes_(bytes) {}

  void menuNeedsUpdate(Menu& menu) override {
    for (int count = bytes_.next() % 8; count > 0; --count) menu.items.push_back(item(0));
  }

  int chosen = 0;

 private:
  MenuItem item(int level) {
    MenuItem made;
    const int kind = bytes_.next();
    made.identifier = std::string(1, static_cast<char>('a' + kind % 5));
    made.title = bytes_.text();
    made.isSeparator = kind % 7 == 0;
    made.isEnabled = kind % 3 != 0;
    if (kind % 2 == 0) {
      made.action = [this](const MenuItem& sender) {
        FUZZ_REQUIRE(sender.isEnabled);
        ++chosen;
      };
    }
    if (kind % 4 == 1) {
      made.toolTip = bytes_.bytes();
      for (int count = bytes_.next() % 4; count > 0; --count) made.attributedTitle.push_back(run());
    }
    if (level < 2 && kind % 5 == 0)
      for (int count = bytes_.next() % 4; count > 0; --count) made.submenu.push_back(item(level + 1));
    return made;
  }

  TextRun run() {
    const int look = bytes_.next();
    const Font font{look % 5 == 0 ? FontFamily::monospacedDigits : FontFamily::system,
                    look % 2 == 0 ? menuFontSize : menuFontSize - 2,
                    look % 3 == 0 ? FontWeight::semibold : FontWeight::regular};
    return {look % 7 == 0 ? "\n   " : bytes_.bytes(), font, static_cast<TextColor>(look % 5)};
  }

  Bytes& bytes_;
};

}  // namespace tollvane
