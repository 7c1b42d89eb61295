// The settings window in Qt Widgets, in the style of the user's desktop. Main thread only; needs a QApplication.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/settings_window.h"

class QScrollArea;
class QVBoxLayout;

namespace tollvane {

class QtSettingsWindows : public SettingsWindows {
 public:
  // `bringForward` is called with the window each time that it has been shown; without it, Qt asks the desktop for it.
  explicit QtSettingsWindows(std::function<void(QWidget&)> bringForward = nullptr);

  std::unique_ptr<SettingsWindow> make(const SettingsWindow::Style& style) override;

 private:
  std::function<void(QWidget&)> bringForward_;
};

class FormGroup;
class Hairline;
class ImageView;
class ScrollThumb;
class SettingsLook;
class TextView;

// The window's content: head and form, which scroll together, and the footer. As long as it lives it follows the
// desktop's palette, font and style.
class SettingsPage : public QWidget {
 public:
  SettingsPage();

  // The size for a font of 13 pixels. A larger font gets a larger window; no window is larger than its screen's free
  // area.
  void setBaseSize(QSize size);

  // Takes the size that fits the font and the screen.
  void fit();

  // What stays keeps its widget, the focus and its place on the screen.
  void setContent(const ui::SettingsContent& content);

 protected:
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Section {
    TextView* title;
    FormGroup* group;
  };
  using Places = std::vector<std::pair<QPointer<QWidget>, int>>;

  QWidget* makeHead();
  void makeForm();
  void setIntroduction(const std::vector<ui::Text>& texts);
  void setSections(const std::vector<ui::Section>& sections);
  void addSection();
  void removeSection();
  void dress();
  void chainFocus();
  void makeScrollBar();
  void followForm();
  bool pressDefaultButton();

  void layOut();
  int placeOf(const QWidget* element) const;
  Places placesInSight() const;
  void restore(const Places& places);

  ImageView* icon_;
  QVBoxLayout* introduction_;
  std::vector<TextView*> introductionTexts_;
  QScrollArea* scroll_;
  ScrollThumb* bar_;
  QVBoxLayout* form_;
  std::vector<Section> sections_;
  Hairline* below_;
  TextView* footer_;
  QSize baseSize_;
};

}  // namespace tollvane
