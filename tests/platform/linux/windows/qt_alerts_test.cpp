#include "platform/linux/windows/qt_alerts.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <QMessageBox>

namespace tollvane {
namespace {

class QtAlertsTest : public ::testing::Test {
 protected:
  QMessageBox* box = nullptr;
  QtAlerts alerts{[this](QMessageBox& shown) { box = &shown; }};
};

TEST_F(QtAlertsTest, AnAlertCarriesTheBellAndCannotBeMinimised) {
  alerts.show({"Mail is closed", "Mail made this sound but isn't open anymore."}, [](std::size_t) {});
  ASSERT_NE(box, nullptr);
  EXPECT_FALSE(box->windowIcon().isNull());
  EXPECT_FALSE(box->windowFlags() & Qt::WindowMinMaxButtonsHint);
  EXPECT_TRUE(box->windowFlags() & Qt::WindowCloseButtonHint);
}

TEST_F(QtAlertsTest, ASentenceThatBeginsWithARightToLeftNameIsReadFromLeftToRight) {
  alerts.show({"\u05D3\u05D5\u05D0\u05E8 is closed", "\u05D3\u05D5\u05D0\u05E8 made this sound."}, [](std::size_t) {});
  ASSERT_NE(box, nullptr);
  EXPECT_FALSE(box->text().isRightToLeft());
  EXPECT_FALSE(box->informativeText().isRightToLeft());
}

}  // namespace
}  // namespace tollvane
