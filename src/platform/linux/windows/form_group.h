// The rows of one section in a rounded box, with lines between them. A text below a switch or another text belongs to
// it, and so does a button below a text: there is no line between these. Main thread only.
#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "platform/linux/windows/settings_look.h"

class QAbstractButton;
class QVBoxLayout;

namespace tollvane {

class FormGroup : public QWidget, public Dressed {
 public:
  explicit FormGroup(QWidget* parent);

  // Keeps the widgets of elements that stay: those with the same identifier, and texts that follow the same element.
  void setValue(const std::vector<ui::Element>& value);
  void dress(const SettingsLook& look) override;

  // From top to bottom.
  std::vector<QWidget*> elements() const;
  std::vector<QAbstractButton*> buttons() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  struct Entry {
    std::string key;
    QWidget* view;
    bool startsCell;
  };

  QWidget* take(std::vector<Entry>& entries, const std::string& key) const;
  void arrange(const std::vector<Entry>& dropped);
  void setRoom(std::size_t index);
  void describeSwitches();

  QVBoxLayout* column_;
  std::vector<Entry> entries_;
  QColor background_, border_, separator_;
};

}  // namespace tollvane
