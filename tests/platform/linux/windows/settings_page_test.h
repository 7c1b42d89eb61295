// The page of the settings window, for the tests of its controls and of its looks.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <string>
#include <utility>

#include "platform/linux/windows/settings_window.h"
#include "tests/probes/settings_scenarios.h"

namespace tollvane::test {

class SettingsPageTest : public testing::Test {
 protected:
  SettingsPageTest() { page.setFixedSize(520, 640); }

  void show(SettingsScenario& scenario) {
    page.setContent(scenario.content());
    page.show();
    page.activateWindow();
    settle();
  }
  void redraw(SettingsScenario& scenario) {
    page.setContent(scenario.content());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    settle();
  }
  // Each layout asks the layout around it for room, which takes one round of events.
  static void settle() {
    for (int depth = 0; depth < 10; ++depth) QApplication::processEvents();
  }

  // The button with this accessible name.
  QAbstractButton* button(const std::string& name) {
    for (auto* each : page.findChildren<QAbstractButton*>()) {
      if (each->isVisibleTo(&page) &&
          QAccessible::queryAccessibleInterface(each)->text(QAccessible::Name).toStdString() == name)
        return each;
    }
    return nullptr;
  }
  QLabel* label(const std::string& text) {
    for (auto* each : page.findChildren<QLabel*>()) {
      if (each->isVisibleTo(&page) && each->text().toStdString() == text) return each;
    }
    return nullptr;
  }
  QScrollBar* bar() { return page.findChild<QScrollArea*>()->verticalScrollBar(); }
  int onScreen(const QWidget* widget) { return widget->mapTo(&page, QPoint()).y(); }

  void press(QWidget* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, modifiers);
      QApplication::sendEvent(target, &event);
    }
  }
  static void click(QWidget* target) {
    const QPoint at = target->rect().center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, at, target->mapToGlobal(at), Qt::LeftButton,
                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(target, &event);
    }
  }

  static ui::SettingsContent oneRow(ui::Element element) {
    ui::SettingsContent content;
    content.sections = {{"Section", {std::move(element)}}};
    return content;
  }

  SettingsPage page;
};

}  // namespace tollvane::test
