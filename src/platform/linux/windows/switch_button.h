// A switch: its title at the leading edge, the rail at the trailing one; a click anywhere between turns it. To
// accessibility tools it is a check box of that name. Main thread only.
#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>
#include <functional>
#include <optional>

#include "platform/linux/windows/settings_look.h"

namespace tollvane {

class SwitchButton : public QAbstractButton, public Dressed {
 public:
  explicit SwitchButton(QWidget* parent);

  // Never calls the value's `set`: only the user does.
  void setValue(const ui::Toggle& value);
  void dress(const SettingsLook& look) override;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QSize railSize() const;
  int lineHeight() const;
  QRect titleRect(int width) const;
  void drawRail(class QPainter& painter, const QRectF& rail) const;
  void slide();

  std::function<void(bool)> set_;
  std::optional<SettingsLook> look_;
  QVariantAnimation position_;  // of the knob: 0 off, 1 on
};

}  // namespace tollvane
