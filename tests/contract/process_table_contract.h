// What every implementation of ProcessTable must do. `System` makes one with two processes in it:
//
//   struct System {
//     const ProcessTable& processes;
//     Pid parent, child;   // running processes
//     Pid missing;         // an id that no process has
//   };
#pragma once

#include <gtest/gtest.h>

#include "platform/process_table.h"

namespace tollvane::test {

template <typename System>
class ProcessTableContract : public ::testing::Test {
 protected:
  System system;
};

TYPED_TEST_SUITE_P(ProcessTableContract);

TYPED_TEST_P(ProcessTableContract, TheParentOfAProcessIsKnown) {
  EXPECT_EQ(this->system.processes.parentPid(this->system.child), this->system.parent);
}

TYPED_TEST_P(ProcessTableContract, AMissingProcessHasNoParent) {
  EXPECT_EQ(this->system.processes.parentPid(this->system.missing), std::nullopt);
  EXPECT_EQ(this->system.processes.parentPid(-1), std::nullopt);
}

TYPED_TEST_P(ProcessTableContract, TheResponsibleProcessIsAProcessOrNotKnown) {
  EXPECT_GE(this->system.processes.responsiblePid(this->system.child).value_or(1), 1);
}

TYPED_TEST_P(ProcessTableContract, TheChainOfParentsEndsAtTheFirstProcess) {
  Pid pid = this->system.child;
  int steps = 0;
  for (; pid > 0 && steps < 1000; ++steps) {
    const auto parent = this->system.processes.parentPid(pid);
    if (!parent) break;
    pid = *parent;
  }
  EXPECT_LT(steps, 1000);
  EXPECT_GE(pid, 0);
}

REGISTER_TYPED_TEST_SUITE_P(ProcessTableContract, TheParentOfAProcessIsKnown, AMissingProcessHasNoParent,
                            TheResponsibleProcessIsAProcessOrNotKnown, TheChainOfParentsEndsAtTheFirstProcess);

}  // namespace tollvane::test
