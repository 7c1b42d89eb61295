// Counts the allocations that reading a log line makes. A program of its own, because it replaces operator new.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "detect/watcher.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace {

std::size_t allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace tollvane {
namespace {

TEST(AllocationTest, ALineThatReportsNoSoundAllocatesNothing) {
  test::VirtualPlatform system;
  const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
  Watcher watcher(system.queue, system.clock, system.children, system.bundle, resolver);
  int heard = 0;
  watcher.onEvent = [&](const std::shared_ptr<SoundEvent>&) { ++heard; };
  watcher.start();

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

}  // namespace
}  // namespace tollvane
