// The toolkit's application object, for tests that need its event loop but draw nothing.
#pragma once

#include <QCoreApplication>
#include <QEvent>

namespace tollvane::test {

struct TestArguments {
  int count = 1;
  char name[5] = "test";
  char* values[2] = {name, nullptr};
};

class TestApplication : private TestArguments, public QCoreApplication {
 public:
  TestApplication() : QCoreApplication(count, values) {}
  // What is to be deleted later would otherwise never be.
  ~TestApplication() override { sendPostedEvents(nullptr, QEvent::DeferredDelete); }
  TestApplication(const TestApplication&) = delete;
  TestApplication& operator=(const TestApplication&) = delete;
};

}  // namespace tollvane::test
