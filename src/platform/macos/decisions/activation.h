// How an application is brought forward. Pure; any thread.
#pragma once

#include <vector>

namespace tollvane {

enum class ActivationStep {
  yieldAndActivate,        // macOS 14 and later: only the active application can let another one come forward
  activateIgnoringOthers,  // before
  open,                    // the way of a double click in the Finder; an application without windows shows one
};

struct ActivationTarget {
  bool isRunning = false;
  bool isSame = true;      // still the process that is meant, and not a later one with its number
  bool hasBundle = false;  // it can be opened
};

// The steps to try, one after another, until the application is the active one. Empty if there is nothing to try.
inline std::vector<ActivationStep> activationSteps(const ActivationTarget& target, bool yields) {
  if (!target.isRunning || !target.isSame) return {};
  std::vector<ActivationStep> steps = {yields ? ActivationStep::yieldAndActivate
                                              : ActivationStep::activateIgnoringOthers};
  if (target.hasBundle) steps.push_back(ActivationStep::open);
  return steps;
}

}  // namespace tollvane
