// What every implementation of ChildProcesses must do. `System` makes one, and programs for it:
//
//   struct System {
//     // Starts a program that prints `text` and then ends, or, if `stays`, runs until it is asked to end.
//     std::unique_ptr<ChildProcess> start(const std::string& text, bool stays, ChildProcesses::Launch handlers);
//     std::unique_ptr<ChildProcess> startMissing(ChildProcesses::Launch handlers);   // a program that does not exist
//     bool runUntil(const std::function<bool()>& condition);   // runs the event loop; false if it never came true
//     void run();                                              // runs the event loop for a moment
//     bool isRunning();                                        // whether the program that was started last runs
//   };
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/child_processes.h"

namespace tollvane::test {

template <typename System>
class ChildProcessesContract : public ::testing::Test {
 protected:
  ChildProcesses::Launch handlers() {
    return {
        .executable = {},
        .arguments = {},
        .onOutput = [this](std::string_view bytes) { output += bytes; },
        .onTermination =
            [this] {
              ++terminations;
              outputAtEnd = output;
            },
    };
  }

  System system;
  std::string output;
  std::string outputAtEnd;
  int terminations = 0;
};

TYPED_TEST_SUITE_P(ChildProcessesContract);

TYPED_TEST_P(ChildProcessesContract, AllOutputArrivesBeforeTheEndIsReported) {
  const auto process = this->system.start("one\ntwo", false, this->handlers());
  ASSERT_NE(process, nullptr);
  EXPECT_TRUE(this->system.runUntil([&] { return this->terminations > 0; }));
  EXPECT_EQ(this->outputAtEnd, "one\ntwo");
  this->system.run();
  EXPECT_EQ(this->terminations, 1);
}

TYPED_TEST_P(ChildProcessesContract, AMissingProgramIsNotStartedAndItsEndIsNotReported) {
  EXPECT_EQ(this->system.startMissing(this->handlers()), nullptr);
  this->system.run();
  EXPECT_EQ(this->terminations, 0);
}

TYPED_TEST_P(ChildProcessesContract, AProgramThatIsAskedToEndEnds) {
  const auto process = this->system.start("ready", true, this->handlers());
  ASSERT_NE(process, nullptr);
  ASSERT_TRUE(this->system.runUntil([&] { return this->output == "ready"; }));
  EXPECT_EQ(this->terminations, 0);
  process->terminate();
  EXPECT_TRUE(this->system.runUntil([&] { return this->terminations == 1; }));
  process->terminate();  // does nothing: the program has ended
}

TYPED_TEST_P(ChildProcessesContract, WithoutItsHandlerTheEndIsNotReported) {
  const auto process = this->system.start("ready", true, this->handlers());
  ASSERT_NE(process, nullptr);
  ASSERT_TRUE(this->system.runUntil([&] { return this->output == "ready"; }));
  process->removeTerminationHandler();
  process->terminate();
  EXPECT_TRUE(this->system.runUntil([&] { return !this->system.isRunning(); }));
  this->system.run();
  EXPECT_EQ(this->terminations, 0);
}

TYPED_TEST_P(ChildProcessesContract, TheProgramEndsWithItsHandleAndThisIsNotReported) {
  auto process = this->system.start("ready", true, this->handlers());
  ASSERT_NE(process, nullptr);
  ASSERT_TRUE(this->system.runUntil([&] { return this->output == "ready"; }));
  process.reset();
  EXPECT_TRUE(this->system.runUntil([&] { return !this->system.isRunning(); }));
  this->system.run();
  EXPECT_EQ(this->terminations, 0);
}

REGISTER_TYPED_TEST_SUITE_P(ChildProcessesContract, AllOutputArrivesBeforeTheEndIsReported,
                            AMissingProgramIsNotStartedAndItsEndIsNotReported, AProgramThatIsAskedToEndEnds,
                            WithoutItsHandlerTheEndIsNotReported, TheProgramEndsWithItsHandleAndThisIsNotReported);

}  // namespace tollvane::test
