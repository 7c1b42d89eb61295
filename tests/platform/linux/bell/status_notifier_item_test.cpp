#include "platform/linux/bell/status_notifier_item.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tollvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Calls the methods of the item directly, without a bus.
class StatusNotifierItemTest : public ::testing::Test {
 protected:
  std::vector<std::string> clicks;
  StatusNotifierItem item{
      QStringLiteral("/icons"), [this](const StatusItemActivation& click) {
        clicks.push_back(std::to_string(click.x) + " " + std::to_string(click.y) + " " + click.token.toStdString());
      }};
};

TEST_F(StatusNotifierItemTest, AClickReachesTheHandler) {
  item.Activate(1266, 14);
  EXPECT_THAT(clicks, ElementsAre("1266 14 "));
}

TEST_F(StatusNotifierItemTest, TheActivationTokenBelongsToTheNextClickOnly) {
  item.ProvideXdgActivationToken(QStringLiteral("token-1"));
  item.Activate(1, 2);
  item.Activate(3, 4);
  EXPECT_THAT(clicks, ElementsAre("1 2 token-1", "3 4 "));
}

TEST_F(StatusNotifierItemTest, TheTokenOfAnotherGestureIsForgotten) {
  for (const auto gesture : {&StatusNotifierItem::SecondaryActivate, &StatusNotifierItem::ContextMenu}) {
    item.ProvideXdgActivationToken(QStringLiteral("token-1"));
    (item.*gesture)(1, 2);
    EXPECT_TRUE(item.takeActivationToken().isEmpty());
  }
  EXPECT_THAT(clicks, IsEmpty());
}

TEST_F(StatusNotifierItemTest, AnItemOfTheMenuTakesTheTokenOnce) {
  item.ProvideXdgActivationToken(QStringLiteral("token-1"));
  EXPECT_EQ(item.takeActivationToken(), QStringLiteral("token-1"));
  EXPECT_TRUE(item.takeActivationToken().isEmpty());
}

}  // namespace
}  // namespace tollvane
