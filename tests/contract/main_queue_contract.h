// What every implementation of MainQueue must do. `System` makes one, and runs it:
//
//   struct System {
//     MainQueue& queue;
//     void run(Duration time);                                     // runs the event loop for that long
//     bool runUntil(const std::function<bool()>& condition);       // the same, until then; false if it never came true
//     std::filesystem::path folder;                                // a folder that can be watched
//     void addFile(const std::string& name);                       // adds a file to that folder
//     void removeFolder();                                         // removes that folder
//   };
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/main_queue.h"
#include "platform/posix/unique_fd.h"

namespace tollvane::test {

template <typename System>
class MainQueueContract : public ::testing::Test {
 protected:
  MainQueueContract() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    reading = UniqueFd(ends[0]);
    writing = UniqueFd(ends[1]);
  }
  void write(const std::string& text) const {
    EXPECT_EQ(::write(writing.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  std::string read() const {
    std::array<char, 16> bytes;
    const ssize_t size = ::read(reading.get(), bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
  }

  System system;
  MainQueue& queue = system.queue;
  UniqueFd reading, writing;
  std::string order;
};

TYPED_TEST_SUITE_P(MainQueueContract);

TYPED_TEST_P(MainQueueContract, ABlockRunsAfterTheCurrentWorkAndAfterEarlierBlocks) {
  this->queue.post([&] {
    this->queue.post([&] { this->order += '3'; });
    this->order += '1';
  });
  this->queue.post([&] { this->order += '2'; });
  EXPECT_EQ(this->order, "") << "not at once";
  EXPECT_TRUE(this->system.runUntil([&] { return this->order.size() == 3; }));
  EXPECT_EQ(this->order, "123");
}

TYPED_TEST_P(MainQueueContract, ADelayedBlockRunsWhenItsTimeHasComeAndNotBefore) {
  using namespace std::chrono_literals;
  this->queue.after(40ms, [&] { this->order += '2'; });
  this->queue.after(20ms, [&] { this->order += '1'; });
  EXPECT_TRUE(this->system.runUntil([&] { return !this->order.empty(); }));
  EXPECT_EQ(this->order, "1");
  EXPECT_TRUE(this->system.runUntil([&] { return this->order == "12"; }));
}

TYPED_TEST_P(MainQueueContract, BlocksThatFallDueTogetherRunInTheirOrder) {
  using namespace std::chrono_literals;
  for (const char digit : {'1', '2', '3'}) this->queue.after(5ms, [this, digit] { this->order += digit; });
  EXPECT_TRUE(this->system.runUntil([&] { return this->order.size() == 3; }));
  EXPECT_EQ(this->order, "123");
}

TYPED_TEST_P(MainQueueContract, ADescriptorIsReportedWhileThereIsSomethingToRead) {
  const auto watch = this->queue.watchReadable(this->reading.get(), [&] { this->order += this->read(); });
  this->system.run(Duration::zero());
  EXPECT_EQ(this->order, "");
  this->write("a");
  EXPECT_TRUE(this->system.runUntil([&] { return this->order == "a"; }));
  this->write("b");
  EXPECT_TRUE(this->system.runUntil([&] { return this->order == "ab"; }));
}

TYPED_TEST_P(MainQueueContract, ADescriptorAtItsEndIsReportedToo) {
  bool ended = false;
  std::unique_ptr<MainQueue::Watch> watch;
  watch = this->queue.watchReadable(this->reading.get(), [&] {
    ended = this->read().empty();
    watch.reset();  // a block may end its own watch
  });
  this->writing.reset();
  EXPECT_TRUE(this->system.runUntil([&] { return ended; }));
}

TYPED_TEST_P(MainQueueContract, ADescriptorWithRoomToWriteIsReported) {
  ::fcntl(this->writing.get(), F_SETFL, O_NONBLOCK);
  const std::string much(1 << 16, 'x');
  std::size_t filled = 0;
  for (ssize_t size = 0; (size = ::write(this->writing.get(), much.data(), much.size())) > 0;)
    filled += static_cast<std::size_t>(size);
  bool room = false;
  std::unique_ptr<MainQueue::Watch> watch;
  watch = this->queue.watchWritable(this->writing.get(), [&] {
    room = true;
    watch.reset();  // a block may end its own watch
  });
  this->system.run(std::chrono::milliseconds(20));
  EXPECT_FALSE(room);
  std::string sink(filled, ' ');
  EXPECT_GT(::read(this->reading.get(), sink.data(), sink.size()), 0);
  EXPECT_TRUE(this->system.runUntil([&] { return room; }));
}

TYPED_TEST_P(MainQueueContract, AWatchThatHasEndedReportsNothing) {
  auto watch = this->queue.watchReadable(this->reading.get(), [&] { this->order += '!'; });
  this->write("a");
  watch.reset();
  this->system.run(std::chrono::milliseconds(20));
  EXPECT_EQ(this->order, "");
}

TYPED_TEST_P(MainQueueContract, ANewEntryOfADirectoryIsReported) {
  int changes = 0;
  const auto watch = this->queue.watchDirectory(this->system.folder, [&] { ++changes; });
  ASSERT_NE(watch, nullptr);
  this->system.run(Duration::zero());
  EXPECT_EQ(changes, 0);
  this->system.addFile("one");
  EXPECT_TRUE(this->system.runUntil([&] { return changes > 0; }));
}

TYPED_TEST_P(MainQueueContract, ADirectoryThatHasGoneIsReported) {
  int changes = 0;
  const auto watch = this->queue.watchDirectory(this->system.folder, [&] { ++changes; });
  this->system.removeFolder();
  EXPECT_TRUE(this->system.runUntil([&] { return changes > 0; }));
}

TYPED_TEST_P(MainQueueContract, ADirectoryThatIsMissingCannotBeWatched) {
  EXPECT_EQ(this->queue.watchDirectory(this->system.folder / "missing", [] {}), nullptr);
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueContract, ABlockRunsAfterTheCurrentWorkAndAfterEarlierBlocks,
                            ADelayedBlockRunsWhenItsTimeHasComeAndNotBefore, BlocksThatFallDueTogetherRunInTheirOrder,
                            ADescriptorIsReportedWhileThereIsSomethingToRead, ADescriptorAtItsEndIsReportedToo,
                            ADescriptorWithRoomToWriteIsReported, AWatchThatHasEndedReportsNothing,
                            ANewEntryOfADirectoryIsReported, ADirectoryThatHasGoneIsReported,
                            ADirectoryThatIsMissingCannotBeWatched);

}  // namespace tollvane::test
