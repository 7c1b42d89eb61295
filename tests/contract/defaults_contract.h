// What every implementation of Defaults must do. `System` makes one for a user without any settings yet:
//
//   struct System {
//     Defaults& defaults();
//     void startAgain();   // reads the store as a new process does; defaults() is another object then
//   };
#pragma once

#include <gtest/gtest.h>

#include <variant>

#include "platform/defaults.h"

namespace tollvane::test {

template <typename System>
class DefaultsContract : public ::testing::Test {
 protected:
  System system;

  template <typename Value>
  std::optional<Value> stored(std::string_view key) {
    const auto value = system.defaults().object(key);
    const auto* held = value ? std::get_if<Value>(&*value) : nullptr;
    return held ? std::optional(*held) : std::nullopt;
  }
};

TYPED_TEST_SUITE_P(DefaultsContract);

TYPED_TEST_P(DefaultsContract, AKeyThatWasNeverSetIsAbsent) {
  EXPECT_FALSE(this->system.defaults().object("never"));
  this->system.defaults().set("other", true);
  EXPECT_FALSE(this->system.defaults().object("never"));
}

TYPED_TEST_P(DefaultsContract, AValueIsReadInTheTypeInWhichItWasSet) {
  this->system.defaults().set("yes", true);
  this->system.defaults().set("no", false);
  this->system.defaults().set("number", 1738332309.25);
  EXPECT_EQ(this->template stored<bool>("yes"), true);
  EXPECT_EQ(this->template stored<bool>("no"), false);
  EXPECT_EQ(this->template stored<double>("number"), 1738332309.25);
}

TYPED_TEST_P(DefaultsContract, TheLastValueCountsEvenIfItsTypeIsAnother) {
  this->system.defaults().set("key", true);
  this->system.defaults().set("key", false);
  EXPECT_EQ(this->template stored<bool>("key"), false);
  this->system.defaults().set("key", 2.5);
  EXPECT_EQ(this->template stored<double>("key"), 2.5);
}

TYPED_TEST_P(DefaultsContract, AValueOutlivesTheProcess) {
  this->system.defaults().set("yes", true);
  this->system.defaults().set("number", 0.1);
  this->system.startAgain();
  EXPECT_EQ(this->template stored<bool>("yes"), true);
  EXPECT_EQ(this->template stored<double>("number"), 0.1);
  EXPECT_FALSE(this->system.defaults().object("never"));
}

REGISTER_TYPED_TEST_SUITE_P(DefaultsContract, AKeyThatWasNeverSetIsAbsent, AValueIsReadInTheTypeInWhichItWasSet,
                            TheLastValueCountsEvenIfItsTypeIsAnother, AValueOutlivesTheProcess);

}  // namespace tollvane::test
