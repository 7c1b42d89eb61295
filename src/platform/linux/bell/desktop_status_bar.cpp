#include "platform/linux/bell/desktop_status_bar.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPalette>
#include <QSystemTrayIcon>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/drawing/plain_text.h"
#include "platform/linux/drawing/symbols.h"
#include "platform/linux/menu/rich_menu.h"

namespace tollvane {
namespace {

// An old tray usually has the colours of the other windows.
BarTone toneOfWindows() {
  constexpr int middle = 128;
  return QGuiApplication::palette().color(QPalette::Window).lightness() < middle ? BarTone::dark : BarTone::light;
}

QIcon iconOf(const QList<QImage>& images) {
  QIcon icon;
  for (const QImage& image : images) icon.addPixmap(QPixmap::fromImage(image));
  return icon;
}

}  // namespace

// The bell in an X11 desktop's old system tray.
// Source: freedesktop.org, System Tray Protocol 0.3, as the toolkit speaks it.
class DesktopStatusBar::OldTrayIcon {
 public:
  // Whether there is such a tray now. To be called only while nothing shows StatusNotifierItems: at the first call, the
  // toolkit decides which of the two protocols it uses as long as the process runs.
  static bool isThere();

  explicit OldTrayIcon(std::function<void(QPoint)> onClick);

  void setImage(std::string_view symbolName);
  void setToolTip(std::string_view text);

 private:
  QSystemTrayIcon icon_;
};

bool DesktopStatusBar::OldTrayIcon::isThere() {
  return QGuiApplication::platformName() == QLatin1String("xcb") && QSystemTrayIcon::isSystemTrayAvailable();
}

DesktopStatusBar::OldTrayIcon::OldTrayIcon(std::function<void(QPoint)> onClick) {
  QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_,
                   [onClick = std::move(onClick)](QSystemTrayIcon::ActivationReason reason) {
                     if (reason != QSystemTrayIcon::Trigger && reason != QSystemTrayIcon::Context) return;
                     if (onClick) onClick(QCursor::pos());
                   });
}

void DesktopStatusBar::OldTrayIcon::setImage(std::string_view symbolName) {
  icon_.setIcon(iconOf(drawIcon(iconNameForSymbol(symbolName), toneOfWindows())));
  icon_.show();  // not earlier: without an image there is nothing to show
}

// The toolkit reads the text as markup, so it must not contain anything that looks like markup.
void DesktopStatusBar::OldTrayIcon::setToolTip(std::string_view text) {
  icon_.setToolTip(QString::fromStdString(plainToolTip(text)));
}

// Keeps everything that was set for the item, because it may have to be made anew in the other form.
class DesktopStatusBar::Item : public StatusItem {
 public:
  explicit Item(DesktopStatusBar& bar) : bar_(bar) { showModern(); }
  ~Item() override { bar_.item_ = nullptr; }

  void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override {
    symbol_ = symbolName;
    description_ = accessibilityDescription;
    bar_.shell_.setImage(symbol_, description_);
    if (modern_) modern_->setImage(symbol_, description_);
    if (old_) old_->setImage(symbol_);
  }

  void setToolTip(std::string_view text) override {
    toolTip_ = text;
    bar_.shell_.setToolTip(toolTip_);
    if (modern_) modern_->setToolTip(toolTip_);
    if (old_) old_->setToolTip(toolTip_);
  }

  void setMenu(MenuDelegate& delegate) override {
    menu_ = &delegate;
    bar_.shell_.setMenu(delegate);
    drawn_.emplace(delegate);
    drawn_->onChoice = [this](const std::string& token) {
      if (bar_.onChoice) bar_.onChoice(token);
    };
    if (modern_) modern_->setMenu(delegate);
  }

  bool showMenu() {
    if (!RichMenu::isPossible()) return bar_.shell_.showMenu();
    if (!drawn_) return false;
    drawn_->toggleByKeyboard();
    return true;
  }

  void showModern() {
    if (modern_) return;
    old_.reset();
    modern_ = bar_.modern_.makeStatusItem();
    if (!modern_) return;
    if (!symbol_.empty()) modern_->setImage(symbol_, description_);
    if (!toolTip_.empty()) modern_->setToolTip(toolTip_);
    if (menu_ != nullptr) modern_->setMenu(*menu_);
  }

  void showOld() {
    if (old_) return;
    modern_.reset();
    old_.emplace([this](QPoint point) {
      if (drawn_) drawn_->toggle(point);
    });
    old_->setToolTip(toolTip_);
    old_->setImage(symbol_);
  }

 private:
  DesktopStatusBar& bar_;
  std::string symbol_, description_, toolTip_;
  MenuDelegate* menu_ = nullptr;
  std::unique_ptr<StatusItem> modern_;
  std::optional<RichMenu> drawn_;  // for the keyboard, and for the old tray, which has no menus of its own
  std::optional<OldTrayIcon> old_;
};

DesktopStatusBar::DesktopStatusBar(QDBusConnection bus, StatusBar& modern, MainQueue& queue)
    : modern_(modern),
      queue_(queue),
      shell_(bus),
      hosts_(std::move(bus), [this](bool hasHost) { hostsChanged(hasHost); }) {
  shell_.onChoice = [this](const std::string& token) {
    if (onChoice) onChoice(token);
  };
  decideAfterGrace();
}

DesktopStatusBar::~DesktopStatusBar() = default;

std::unique_ptr<StatusItem> DesktopStatusBar::makeStatusItem() {
  auto item = std::make_unique<Item>(*this);
  item_ = item.get();
  return item;
}

bool DesktopStatusBar::showMenu() { return item_ != nullptr && item_->showMenu(); }

void DesktopStatusBar::hostsChanged(bool hasHost) {
  if (!hasHost) return decideAfterGrace();
  ++decision_;
  if (item_ != nullptr) item_->showModern();
}

void DesktopStatusBar::decideAfterGrace() {
  queue_.after(grace, alive_.guard([this, number = ++decision_] {
    if (number == decision_ && !hosts_.hasHost()) decide();
  }));
}

void DesktopStatusBar::decide() {
  if (item_ == nullptr || shell_.isAttached()) return;
  if (OldTrayIcon::isThere()) return item_->showOld();
  if (std::exchange(toldOfNone_, true)) return;
  if (onNoStatusBar) onNoStatusBar();
}

}  // namespace tollvane
