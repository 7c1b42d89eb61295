#include "platform/linux/windows/qt_alerts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <utility>
#include <vector>

#include "platform/linux/drawing/plain_text.h"
#include "platform/linux/windows/settings_look.h"

namespace tollvane {
namespace {

// No real name or title needs more. Longer texts are shortened, so that the box stays on the screen.
constexpr qsizetype longestMessage = 120;
constexpr qsizetype longestInformation = 400;
constexpr qsizetype longestButton = 40;
constexpr int charactersPerLine = 46;

// The sentences are read from left to right, even if one begins with a name that is not.
QString sentence(const QString& text) {
  constexpr QChar leftToRightMark = u'\u200E';
  return text.isRightToLeft() ? leftToRightMark + breakable(text) : breakable(text);
}

// An ampersand is shown as such, and marks no mnemonic.
QString buttonText(const std::string& text) {
  return shortenedInside(text, longestButton).replace(QLatin1Char('&'), QLatin1String("&&"));
}

// The text format of the box is for its first label only, so each label gets it here.
void describe(QMessageBox& box, const char* labelName, const QString& text, bool bold) {
  auto* label = box.findChild<QLabel*>(QString::fromLatin1(labelName));
  if (label == nullptr) return;
  label->setTextFormat(Qt::PlainText);
  label->setAccessibleName(text);  // without marks and places where a line may end
  label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  // The text can be selected, but the keyboard begins at the buttons.
  label->setFocusPolicy(Qt::ClickFocus);
  if (!bold) label->setMinimumWidth(charactersPerLine * label->fontMetrics().averageCharWidth());
  if (!bold) return;
  QFont font = label->font();
  font.setBold(true);
  label->setFont(font);
}

}  // namespace

QtAlerts::QtAlerts(std::function<void(QMessageBox&)> bringForward) : bringForward_(std::move(bringForward)) {}

QtAlerts::~QtAlerts() { delete shown_; }

void QtAlerts::show(const Alert& alert, std::function<void(std::size_t button)> answer) {
  waiting_.push_back({alert, std::move(answer)});
  if (!shown_) showNext();
}

void QtAlerts::showNext() {
  if (waiting_.empty()) return;
  Waiting next = std::move(waiting_.front());
  waiting_.pop_front();
  showNow(next.alert, std::move(next.answer));
}

void QtAlerts::showNow(const Alert& alert, std::function<void(std::size_t)> answer) {
  auto* box = new QMessageBox;
  shown_ = box;
  box->setWindowTitle(QStringLiteral("Tollvane"));
  box->setWindowIcon(windowIcon(*box));
  // A question is answered or closed, and cannot be minimised.
  box->setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                      Qt::WindowCloseButtonHint);
  box->setTextFormat(Qt::PlainText);
  const QString message = shortenedInside(alert.messageText, longestMessage);
  const QString information = shortenedInside(alert.informativeText, longestInformation);
  box->setText(sentence(message));
  box->setInformativeText(sentence(information));
  describe(*box, "qt_msgbox_label", message, true);
  describe(*box, "qt_msgbox_informativelabel", information, false);
  std::vector<QAbstractButton*> buttons;
  for (const std::string& text : alert.buttons) {
    const auto role = buttons.empty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole;
    buttons.push_back(box->addButton(buttonText(text), role));
  }
  if (!buttons.empty()) {
    box->setDefaultButton(static_cast<QPushButton*>(buttons.front()));
    box->setEscapeButton(buttons.back());
  }
  // Screen readers read widgets in the order in which they were raised: the buttons come last.
  if (auto* row = box->findChild<QDialogButtonBox*>()) row->raise();
  QObject::connect(box, &QMessageBox::finished, box, [this, box, buttons, answer = std::move(answer)] {
    std::size_t chosen = 0;
    while (chosen + 1 < buttons.size() && buttons[chosen] != box->clickedButton()) ++chosen;
    shown_ = nullptr;
    box->deleteLater();
    answer(chosen);
    if (!shown_) showNext();
  });
  box->open();
  if (bringForward_) bringForward_(*box);
}

}  // namespace tollvane
