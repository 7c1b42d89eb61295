// Counts the allocations that reading a log line makes. A program of its own, because it replaces operator new.
// Source: malloc_usable_size(3).

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "detect/watcher.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace {

std::size_t allocations = 0;
std::size_t held = 0;      // bytes
std::size_t mostHeld = 0;  // since it was set last

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (!memory) throw std::bad_alloc();
  held += ::malloc_usable_size(memory);
  mostHeld = std::max(mostHeld, held);
  return memory;
}
void operator delete(void* memory) noexcept {
  held -= ::malloc_usable_size(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace tollvane {
namespace {

class AllocationTest : public testing::Test {
 protected:
  AllocationTest() {
    watcher.onEvent = [this](const std::shared_ptr<SoundEvent>&) { ++heard; };
    watcher.start();
  }

  test::VirtualPlatform system;
  const Resolver resolver{system.processes, system.workspace, system.locations, system.files};
  Watcher watcher{system.queue, system.clock, system.children, system.bundle, resolver};
  int heard = 0;
};

TEST_F(AllocationTest, ALineThatReportsNoSoundAllocatesNothing) {
  const std::string sound = test::outputStarted("player", 4242);
  const std::string others =
      test::logLine("/usr/sbin/kernel", "update_running_state " + std::string(800, 'x')) +  // not parsed
      test::logLine("/usr/sbin/kernel", test::outputMessage("player", "4242")) +            // parsed
      test::logLine("/usr/sbin/systemsoundserverd",
                    test::requestMessage("player", "12345678901")) +  // parsed and matched
      "no JSON at all, bundle=\n{\"eventMessage\": \"inClientPID 1(\n";
  system.children.last().print(others + sound);  // buffers and parsers grow to their size
  ASSERT_EQ(heard, 1);

  const std::size_t before = allocations;
  system.children.last().print(others);
  system.children.last().print(others);
  EXPECT_EQ(allocations, before);

  system.clock.advance(std::chrono::seconds(2));
  system.children.last().print(sound);
  EXPECT_EQ(heard, 2);
  EXPECT_GT(allocations, before);  // the counter works
}

TEST_F(AllocationTest, ALineOfMoreThanSixteenMebibytesIsDroppedAndNeverHeldTwice) {
  const std::string piece(1 << 20, 'x');
  const std::size_t before = mostHeld = held;
  for (int i = 0; i < 40; ++i) system.children.last().print(piece);
  const std::size_t most = mostHeld - before;
  EXPECT_GE(most, std::size_t{16} << 20);
  EXPECT_LE(most, std::size_t{32} << 20);
  system.children.last().print("\n" + test::outputStarted("player", 4242));
  EXPECT_EQ(heard, 1);
}

}  // namespace
}  // namespace tollvane
