#include "model/prefs.h"

#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

TEST(PrefsTest, AFreshAccountHasTheDefaults) {
  test::VirtualDefaults store;
  const Prefs prefs(store);
  EXPECT_FALSE(prefs.markTabs());
  EXPECT_TRUE(prefs.suggestExtension());
  EXPECT_FALSE(prefs.hasLaunchedBefore());
  EXPECT_EQ(prefs.updateLastCheck(), 0);
}

TEST(PrefsTest, AValueOfTheWrongTypeReadsAsTheDefault) {
  test::VirtualDefaults store;
  for (const auto* key : {"markTabs", "suggestExtension", "hasLaunchedBefore", "updateLastCheck"})
    store.values[key] = Defaults::Other{};
  const Prefs prefs(store);
  EXPECT_FALSE(prefs.markTabs());
  EXPECT_TRUE(prefs.suggestExtension());
  EXPECT_FALSE(prefs.hasLaunchedBefore());
  EXPECT_EQ(prefs.updateLastCheck(), 0);
}

TEST(PrefsTest, ANumberIsATruthValueOnlyIfItIsZeroOrOne) {
  test::VirtualDefaults store;
  const Prefs prefs(store);
  store.values["suggestExtension"] = 0.0;
  EXPECT_FALSE(prefs.suggestExtension());
  store.values["markTabs"] = 1.0;
  EXPECT_TRUE(prefs.markTabs());
  store.values["markTabs"] = 2.0;
  EXPECT_FALSE(prefs.markTabs());
}

TEST(PrefsTest, ASetIsInTheStoreAtOnceUnderItsOwnKey) {
  test::VirtualDefaults store;
  Prefs prefs(store);
  prefs.setMarkTabs(true);
  prefs.setSuggestExtension(false);
  prefs.setHasLaunchedBefore(true);
  EXPECT_EQ(std::get<bool>(store.values.at("markTabs")), true);
  EXPECT_EQ(std::get<bool>(store.values.at("suggestExtension")), false);
  EXPECT_EQ(std::get<bool>(store.values.at("hasLaunchedBefore")), true);
  const Prefs others(store);
  EXPECT_TRUE(others.markTabs());
  EXPECT_FALSE(others.suggestExtension());
  EXPECT_TRUE(others.hasLaunchedBefore());
}

}  // namespace
}  // namespace tollvane
