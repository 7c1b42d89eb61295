#include "platform/linux/menu/menu_widget.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QStyleOptionMenuItem>
#include <QTimerEvent>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/drawing/plain_text.h"
#include "platform/linux/menu/menu_style.h"

namespace tollvane {
namespace {

constexpr int typingPause = 1000;  // milliseconds after which typing begins a new word

// Wide enough for our own sentences, narrow enough to be read at a glance.
int widestTitle(const QFont& font, const QScreen& screen) {
  const int lines = 34 * QFontMetrics(font).height();
  return std::min(lines, screen.availableGeometry().width() - 4 * MenuStyle::padding(font));
}

// A layout without Latin letters has none of our keys. There the place on the keyboard counts, as on a US keyboard. The
// codes are those of Linux's input devices (linux/input-event-codes.h) plus 8, on X11 as on Wayland.
Qt::Key latinKey(const QKeyEvent& event) {
  constexpr int lastAscii = 0x7f;
  constexpr int firstSpecial = 0x01000000;  // keys without a character, such as the arrows
  constexpr std::array<std::pair<quint32, Qt::Key>, 3> places = {
      {{24, Qt::Key_Q}, {43, Qt::Key_H}, {59, Qt::Key_Comma}}};
  const auto key = static_cast<Qt::Key>(event.key());
  if (key <= lastAscii || key >= firstSpecial) return key;
  for (const auto& [place, latin] : places)
    if (place == event.nativeScanCode()) return latin;
  return key;
}

QString typedName(const MenuItem& item) {
  for (const TextRun& run : item.attributedTitle) {
    if (run.font.family != FontFamily::monospacedDigits) return plainLine(run.text).trimmed();
  }
  return plainLine(item.title).trimmed();
}

// The toolkit reads a tooltip that looks like markup as markup. So each tooltip is markup, with its text escaped.
// The toolkit would break the lines of markup after a few words, so they are broken here.
QString toolTipMarkup(const std::string& toolTip) {
  constexpr qsizetype widest = 72;  // characters
  if (toolTip.empty()) return {};
  QStringList lines(1);
  for (const QString& word : plainLine(toolTip).split(u' ', Qt::SkipEmptyParts)) {
    QString before = lines.last().isEmpty() ? QString() : QStringLiteral(" ");
    for (const QString& piece : breakable(word).split(zeroWidthSpace)) {
      if (lines.last().size() + before.size() + piece.size() > widest) {
        lines.append(piece);
      } else {
        lines.last() += before + piece;
      }
      before.clear();
    }
  }
  for (QString& line : lines) line = line.toHtmlEscaped();
  return QStringLiteral("<p style='white-space:pre'>%1</p>").arg(lines.join(QLatin1String("<br>")));
}

}  // namespace

MenuWidget::MenuWidget(std::shared_ptr<const Menu> menu) : MenuWidget(menu->items, nullptr) {
  menu_ = std::move(menu);
  setAccessibleName(QStringLiteral("Tollvane"));
  auto* style = new MenuStyle;
  style->setParent(this);
  setStyle(style);
  for (MenuWidget* submenu : submenus_) submenu->setStyle(style);
  arrangeTitles();
}

MenuWidget::MenuWidget(const std::vector<MenuItem>& items, MenuWidget* parent)
    : QMenu(parent), top_(parent == nullptr ? this : parent->top_) {
  // A layer surface cannot be the parent of the toolkit's tooltips.
  setToolTipsVisible(!QGuiApplication::platformName().startsWith(QLatin1String("wayland")));
  setLayoutDirection(Qt::LeftToRight);
  addEntries(items);
}

void MenuWidget::addEntries(const std::vector<MenuItem>& items) {
  for (const MenuItem& item : items) {
    auto* entry = new MenuEntry(item, font(), this);
    addAction(entry);
    entries_.push_back(entry);
    if (item.submenu.empty()) continue;
    auto* submenu = new MenuWidget(item.submenu, this);
    submenu->setAccessibleName(spokenTitle(item));
    entry->setMenu(submenu);
    submenus_.push_back(submenu);
  }
}

void MenuWidget::collect(std::vector<MenuEntry*>& all) const {
  all.insert(all.end(), entries_.begin(), entries_.end());
  for (const MenuWidget* submenu : submenus_) submenu->collect(all);
}

void MenuWidget::arrangeTitles() {
  std::vector<MenuEntry*> all;
  collect(all);
  qreal column = 0;
  for (const MenuEntry* entry : all) column = std::max(column, entry->title().leadWidth());
  const int widest = widestTitle(font(), *screen());
  for (MenuEntry* entry : all) entry->title().arrange(column, widest);
}

void MenuWidget::setVisible(bool visible) {
  if (!visible && isVisible()) Q_EMIT vanishing();
  QMenu::setVisible(visible);
}

void MenuWidget::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const {
  QMenu::initStyleOption(option, action);
  styled_ = dynamic_cast<const MenuEntry*>(action);
}

void MenuWidget::keyPressEvent(QKeyEvent* event) {
  if (chooseByKeys(*event) || findTyped(*event)) return event->accept();
  QMenu::keyPressEvent(event);
}

bool MenuWidget::chooseByKeys(const QKeyEvent& event) {
  const QKeySequence pressed(QKeyCombination(event.modifiers(), latinKey(event)));
  const auto& all = top_->entries_;
  const auto found = std::find_if(all.begin(), all.end(), [&](const MenuEntry* entry) {
    return !entry->keys().isEmpty() && entry->keys() == pressed && entry->isEnabled();
  });
  if (found == all.end()) return false;
  closeAll();
  (*found)->trigger();
  return true;
}

void MenuWidget::closeAll() {
  for (MenuWidget* submenu : top_->submenus_) submenu->hide();
  top_->hide();
}

bool MenuWidget::isOutside(const QPoint& global) const {
  const auto covers = [&](const MenuWidget* menu) { return menu->isVisible() && menu->geometry().contains(global); };
  return !covers(top_) && std::none_of(top_->submenus_.begin(), top_->submenus_.end(), covers);
}

// A press outside leaves the menu open until the release, so that the pointer stays ours: a panel that got only the
// release would take it for a click on the bell, and would open the menu again that was just closed.
void MenuWidget::mousePressEvent(QMouseEvent* event) {
  top_->pressedOutside_ = isOutside(event->globalPosition().toPoint());
  if (!top_->pressedOutside_) return QMenu::mousePressEvent(event);
  event->accept();
}

void MenuWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (!std::exchange(top_->pressedOutside_, false)) return QMenu::mouseReleaseEvent(event);
  event->accept();
  closeAll();
}

bool MenuWidget::findTyped(const QKeyEvent& event) {
  const QString text = event.text();
  const bool plain = (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0;
  // A blank chooses the entry, unless it is inside a name.
  if (!plain || text.isEmpty() || !text.at(0).isPrint() || (typed_.isEmpty() && text.at(0).isSpace())) return false;
  typing_.start(typingPause, this);
  typed_ += text;
  if (goToTyped()) return true;
  // No name begins with the longer word. The letter begins a new word, or asks for the next entry with this letter.
  typed_ = text;
  if (!goToTyped()) typed_.clear();
  return true;
}

bool MenuWidget::goToTyped() {
  const auto active =
      static_cast<std::size_t>(std::find(entries_.begin(), entries_.end(), activeAction()) - entries_.begin());
  // A single letter goes on to the next entry; further letters may stay at the entry that they have led to.
  const std::size_t first = active + (typed_.size() == 1 ? 1 : 0);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    MenuEntry* entry = entries_[(first + i) % entries_.size()];
    if (!entry->isEnabled() || entry->isSeparator() || !entry->typed().startsWith(typed_, Qt::CaseInsensitive))
      continue;
    setActiveAction(entry);
    return true;
  }
  return false;
}

void MenuWidget::timerEvent(QTimerEvent* event) {
  if (event->timerId() != typing_.timerId()) return QMenu::timerEvent(event);
  typing_.stop();
  typed_.clear();
}

QString spokenTitle(const MenuItem& item) {
  QString spoken = plainLine(item.title);
  for (const TextRun& run : item.attributedTitle) spoken += plainLine(run.text);
  return spoken.simplified();
}

MenuEntry::MenuEntry(const MenuItem& item, const QFont& menuFont, QObject* parent)
    : QAction(parent), item_(item), title_(item, menuFont), typed_(typedName(item)) {
  setText(spokenTitle(item).replace(u'&', QStringLiteral("&&")));
  setToolTip(toolTipMarkup(item.toolTip));
  setSeparator(item.isSeparator);
  setEnabled(item.isEnabled);
  setMenuRole(QAction::NoRole);
  if (!item.keyEquivalent.empty()) {
    keys_ = QKeySequence(QStringLiteral("Ctrl+") + plainLine(item.keyEquivalent).toUpper());
    // This is for screen readers only: the menu itself acts on the keys, and only while it is open.
    setShortcutContext(Qt::WidgetShortcut);
    setShortcut(keys_);
  }
}

}  // namespace tollvane
