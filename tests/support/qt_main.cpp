// The entry point of tests that use the toolkit: it wants its application object before anything else.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
