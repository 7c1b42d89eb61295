#include "platform/linux/windows/settings_window.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/linux/windows/accessible_form.h"
#include "platform/linux/windows/control_views.h"
#include "platform/linux/windows/form_group.h"
#include "platform/linux/windows/scroll_thumb.h"
#include "platform/linux/windows/settings_look.h"

namespace tollvane {

namespace {

constexpr int formSide = 20;
constexpr QMargins headRoom{4, 14, 4, 18};
constexpr QMargins formRoom{formSide, 6, formSide, 18};
constexpr QMargins footerRoom{24, 9, 24, 11};
constexpr int headGap = 16;
constexpr int betweenSections = 18;
constexpr int belowTitle = 7;
constexpr int titleIndent = 4;
constexpr double baseFont = 13;  // in pixels
constexpr int titleBar = 40;     // which the window manager draws
constexpr int likelyPanel = 48;

}  // namespace

SettingsPage::SettingsPage() {
  setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                 Qt::WindowCloseButtonHint);
  setAttribute(Qt::WA_QuitOnClose, false);
  // Or the first switch would have it from the beginning, and nobody would see.
  setFocusPolicy(Qt::ClickFocus);
  setFocus();
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  makeForm();
  column->addWidget(scroll_, 1);
  column->addWidget(below_ = new Hairline(this));
  column->addWidget(footer_ = new TextView(this));
  footer_->setContentsMargins(footerRoom);
  footer_->setAlignment(Qt::AlignCenter);
  describeFormsToAccessibility();
}

QWidget* SettingsPage::makeHead() {
  auto* head = new QWidget;
  auto* row = new QHBoxLayout(head);
  row->setContentsMargins(headRoom);
  row->setSpacing(headGap);
  row->addWidget(icon_ = new ImageView(head), 0, Qt::AlignTop);
  introduction_ = new QVBoxLayout;
  introduction_->setSpacing(6);
  row->addLayout(introduction_, 1);
  return head;
}

void SettingsPage::makeForm() {
  scroll_ = new QScrollArea(this);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setWidgetResizable(true);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // The form is reached through its controls; the keys that scroll it are the window's.
  scroll_->setFocusPolicy(Qt::NoFocus);
  auto* form = new QWidget;
  form_ = new QVBoxLayout(form);
  form_->setContentsMargins(formRoom);
  form_->setSpacing(0);
  form_->addWidget(makeHead());
  form_->addStretch(1);
  scroll_->setWidget(form);
  makeScrollBar();
}

// It stands in the form's margin, so that the boxes stay where they are and as wide as they are when it comes.
void SettingsPage::makeScrollBar() {
  scroll_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  bar_ = new ScrollThumb(scroll_);
  bar_->hide();
  const QScrollBar* place = scroll_->verticalScrollBar();
  connect(place, &QScrollBar::rangeChanged, this, [this] { followForm(); });
  connect(place, &QScrollBar::valueChanged, this, [this] { followForm(); });
  connect(bar_, &QScrollBar::valueChanged, place, &QScrollBar::setValue);
  scroll_->viewport()->installEventFilter(this);
}

void SettingsPage::followForm() {
  const QScrollBar* place = scroll_->verticalScrollBar();
  below_->setDrawn(place->value() < place->maximum());
  bar_->setRange(place->minimum(), place->maximum());
  bar_->setPageStep(scroll_->viewport()->height());
  bar_->setSingleStep(place->singleStep());
  bar_->setValue(place->value());
  bar_->setVisible(place->maximum() > place->minimum());
}

bool SettingsPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == scroll_->viewport() && event->type() == QEvent::Resize) {
    const QRect room = scroll_->rect();
    const int width = std::min(bar_->sizeHint().width(), formSide - 4);
    bar_->setGeometry(
        QStyle::visualRect(layoutDirection(), room, {room.width() - width, room.top(), width, room.height()}));
    followForm();
  }
  return QWidget::eventFilter(watched, event);
}

void SettingsPage::setContent(const ui::SettingsContent& content) {
  const Places places = placesInSight();
  icon_->setValue(content.icon);
  setIntroduction(content.introduction);
  setSections(content.sections);
  footer_->setValue(content.footer);
  dress();
  chainFocus();
  restore(places);
}

void SettingsPage::setIntroduction(const std::vector<ui::Text>& texts) {
  while (introductionTexts_.size() < texts.size()) {
    introductionTexts_.push_back(new TextView(icon_->parentWidget()));
    introduction_->addWidget(introductionTexts_.back());
    introductionTexts_.back()->show();
  }
  for (; introductionTexts_.size() > texts.size(); introductionTexts_.pop_back()) delete introductionTexts_.back();
  for (std::size_t i = 0; i < texts.size(); ++i) introductionTexts_[i]->setValue(texts[i]);
}

void SettingsPage::setSections(const std::vector<ui::Section>& sections) {
  while (sections_.size() < sections.size()) addSection();
  while (sections_.size() > sections.size()) removeSection();
  for (std::size_t i = 0; i < sections.size(); ++i) {
    sections_[i].title->setValue({sections[i].title, ui::TextStyle::body, TextColor::label, FontWeight::semibold});
    sections_[i].group->setAccessibleName(sections_[i].title->text());
    sections_[i].group->setValue(sections[i].elements);
  }
}

void SettingsPage::addSection() {
  QWidget* form = scroll_->widget();
  const Section section{new TextView(form), new FormGroup(form)};
  section.title->setContentsMargins(titleIndent, sections_.empty() ? 0 : betweenSections, titleIndent, belowTitle);
  // The stretch stays last.
  form_->insertWidget(form_->count() - 1, section.title);
  form_->insertWidget(form_->count() - 1, section.group);
  section.title->show();
  section.group->show();
  sections_.push_back(section);
}

void SettingsPage::removeSection() {
  for (QWidget* part : {static_cast<QWidget*>(sections_.back().title), static_cast<QWidget*>(sections_.back().group)}) {
    form_->removeWidget(part);
    part->hide();
    part->deleteLater();  // it may hold the control that has brought this about
  }
  sections_.pop_back();
}

void SettingsPage::dress() {
  const SettingsLook look(palette(), font());
  for (QWidget* widget : findChildren<QWidget*>()) {
    if (auto* dressed = dynamic_cast<Dressed*>(widget)) dressed->dress(look);
  }
}

// New controls would be the last that the keyboard reaches.
void SettingsPage::chainFocus() {
  QWidget* previous = nullptr;
  for (const Section& section : sections_) {
    for (QAbstractButton* button : section.group->buttons()) {
      if (previous) setTabOrder(previous, button);
      previous = button;
    }
  }
}

int SettingsPage::placeOf(const QWidget* element) const { return element->mapTo(scroll_->widget(), QPoint()).y(); }

SettingsPage::Places SettingsPage::placesInSight() const {
  Places places;
  if (!isVisible()) return places;
  for (const Section& section : sections_) {
    for (QWidget* element : section.group->elements()) {
      if (placeOf(element) >= scroll_->verticalScrollBar()->value()) places.emplace_back(element, placeOf(element));
    }
  }
  return places;
}

// From the inside out: how much room one needs is known when all in it have been laid out.
void SettingsPage::layOut() {
  QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
  for (const Section& section : sections_) {
    for (const QWidget* element : section.group->elements()) {
      if (element->layout()) element->layout()->activate();
    }
    section.group->layout()->activate();
  }
  QEvent request(QEvent::LayoutRequest);
  QCoreApplication::sendEvent(scroll_->widget(), &request);
}

// What is in sight stays where it is, whatever has come or gone above it.
void SettingsPage::restore(const Places& places) {
  layOut();
  for (const auto& [element, place] : places) {
    if (!element || element->isHidden()) continue;
    QScrollBar* bar = scroll_->verticalScrollBar();
    bar->setValue(bar->value() + placeOf(element) - place);
    return;
  }
}

void SettingsPage::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  const auto type = event->type();
  if (type == QEvent::PaletteChange || type == QEvent::FontChange || type == QEvent::StyleChange) dress();
  if (type == QEvent::FontChange) fit();
}

void SettingsPage::setBaseSize(QSize size) {
  baseSize_ = size;
  fit();
}

void SettingsPage::fit() {
  if (baseSize_.isEmpty()) return;
  const double growth = std::max(1.0, QFontInfo(font()).pixelSize() / baseFont);
  QSize wanted = (QSizeF(baseSize_) * growth).toSize();
  // On Wayland nobody says how much of the screen the panels take.
  const bool knowsPanels = !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
  const QSize taken(0, titleBar + (knowsPanels ? 0 : likelyPanel));
  if (const QScreen* place = screen()) wanted = wanted.boundedTo(place->availableGeometry().size() - taken);
  setFixedSize(wanted);
}

bool SettingsPage::pressDefaultButton() {
  for (const Section& section : sections_) {
    for (QAbstractButton* button : section.group->buttons()) {
      if (dynamic_cast<ButtonView*>(button) == nullptr || !button->isEnabled()) continue;
      button->click();
      return true;
    }
  }
  return false;
}

void SettingsPage::keyPressEvent(QKeyEvent* event) {
  QScrollBar* bar = scroll_->verticalScrollBar();
  if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close) ||
      event->keyCombination() == (Qt::ControlModifier | Qt::Key_W)) {
    close();
    return;
  }
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (!pressDefaultButton()) QWidget::keyPressEvent(event);
      return;
    case Qt::Key_PageUp:
      return bar->triggerAction(QAbstractSlider::SliderPageStepSub);
    case Qt::Key_PageDown:
      return bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
    case Qt::Key_Home:
      return bar->triggerAction(QAbstractSlider::SliderToMinimum);
    case Qt::Key_End:
      return bar->triggerAction(QAbstractSlider::SliderToMaximum);
    default:
      return QWidget::keyPressEvent(event);
  }
}

namespace {

class QtSettingsWindow : public SettingsWindow {
 public:
  QtSettingsWindow(const Style& style, std::function<void(QWidget&)> bringForward)
      : bringForward_(std::move(bringForward)) {
    page_.setWindowTitle(QString::fromStdString(style.title));
    page_.setWindowIcon(windowIcon(page_));
    page_.setBaseSize({qRound(style.width), qRound(style.height)});
  }

  void setContent(const ui::SettingsContent& content) override { page_.setContent(content); }

  void makeKeyAndOrderFront() override {
    if (!std::exchange(placed_, true)) place();
    page_.setWindowState(page_.windowState() & ~Qt::WindowMinimized);
    page_.show();
    if (bringForward_) return bringForward_(page_);
    page_.raise();
    page_.activateWindow();
  }

 private:
  // In the middle of the screen on which the user is, with the title bar.
  void place() {
    if (QScreen* screen = QGuiApplication::screenAt(QCursor::pos())) page_.setScreen(screen);
    page_.fit();
    const QRect room = page_.screen()->availableGeometry();
    const QPoint corner = room.center() - page_.rect().center();
    page_.move(std::max(corner.x(), room.left()), std::max(corner.y() - titleBar / 2, room.top()));
  }

  std::function<void(QWidget&)> bringForward_;
  SettingsPage page_;
  bool placed_ = false;
};

}  // namespace

QtSettingsWindows::QtSettingsWindows(std::function<void(QWidget&)> bringForward)
    : bringForward_(std::move(bringForward)) {}

std::unique_ptr<SettingsWindow> QtSettingsWindows::make(const SettingsWindow::Style& style) {
  return std::make_unique<QtSettingsWindow>(style, bringForward_);
}

}  // namespace tollvane
