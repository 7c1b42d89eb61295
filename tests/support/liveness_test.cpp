#include "support/liveness.h"

#include <gtest/gtest.h>

#include <functional>

namespace tollvane {
namespace {

TEST(LivenessTest, AGuardedFunctionRunsOnlyWhileItsOwnerLives) {
  int calls = 0;
  std::function<void(int)> function;
  {
    const Liveness alive;
    function = alive.guard([&](int by) { calls += by; });
    function(2);
    EXPECT_EQ(calls, 2);
  }
  function(2);
  EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace tollvane
