#include "platform/linux/system/resting_memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <QApplication>
#include <QMenu>
#include <QWidget>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/process.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

// KiB in memory of what the process only reads of this file.
int residentOf(const std::string& file) {
  std::ifstream mappings("/proc/self/smaps");
  int sum = 0;
  bool isIt = false;
  for (std::string line; std::getline(mappings, line);) {
    std::istringstream words(line);
    std::string first;
    std::string second;
    words >> first >> second;
    if (first == "Rss:") sum += isIt ? std::stoi(second) : 0;
    if (first.back() != ':') isIt = second.find('w') == second.npos && line.find(file) != line.npos;
  }
  return sum;
}

class RestingMemoryTest : public testing::Test {
 protected:
  // Lets the event loop run until `times` calls came, and then until nothing is left to do.
  void settle(int times) {
    EXPECT_TRUE(waitUntil([&] {
      QCoreApplication::processEvents();
      return calls >= times;
    }));
    QCoreApplication::processEvents();
  }

  int calls = 0;
  std::function<void()> count = [this] { ++calls; };
};

TEST_F(RestingMemoryTest, GivesPagesOfLibrariesBackAndStillRuns) {
  QWidget().grab();
  const int before = residentOf("libQt6Widgets");
  ASSERT_GT(before, 500);
  giveBackMemory();
  EXPECT_LT(residentOf("libQt6Widgets"), before / 4);
  EXPECT_FALSE(QWidget().grab().isNull());
  EXPECT_GT(residentOf("libQt6Widgets"), 0);
}

// A debugger sets its breakpoints like this.
TEST_F(RestingMemoryTest, KeepsWhatWasChangedOfAProgramFile) {
  static const char text[] = "as it stands in the file";
  volatile char& letter = const_cast<char&>(text[0]);
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  char* const begin = const_cast<char*>(text) - reinterpret_cast<std::uintptr_t>(text) % page;
  ASSERT_EQ(mprotect(begin, page, PROT_READ | PROT_WRITE), 0);
  letter = 'A';
  ASSERT_EQ(mprotect(begin, page, PROT_READ), 0);
  giveBackMemory();
  EXPECT_EQ(char{letter}, 'A');
}

TEST_F(RestingMemoryTest, GivesBackOnceAfterTheStart) {
  RestingMemory memory(0ms, count);
  settle(1);
  EXPECT_EQ(calls, 1);
}

TEST_F(RestingMemoryTest, GivesBackAgainAfterAMenu) {
  RestingMemory memory(0ms, count);
  settle(1);
  QMenu menu;
  menu.addAction(QStringLiteral("One"));
  menu.popup({0, 0});
  QCoreApplication::processEvents();
  menu.close();
  settle(2);
  EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace tollvane::test
