#include <gtest/gtest.h>

#include "platform/linux/workspace/sway_ipc.h"

namespace tollvane {
namespace {

constexpr const char* tree = R"({"id": 1, "type": "root", "focus": [3, 2], "nodes": [
  {"id": 2, "type": "output", "focus": [], "nodes": []},
  {"id": 3, "type": "output", "focus": [30, 40], "nodes": [
    {"id": 30, "type": "workspace", "focus": [32, 31], "floating_nodes": [], "nodes": [
      {"id": 31, "pid": 100, "name": "Inbox - Player", "app_id": "player", "focus": []},
      {"id": 32, "pid": 100, "app_id": "player", "focus": []},
      {"id": 33, "pid": 300, "app_id": "unfocused", "focus": []}]},
    {"id": 40, "type": "workspace", "focus": [41], "nodes": [], "floating_nodes": [
      {"id": 41, "pid": 200, "app_id": null, "window_properties": {"class": "PlayerWindow"}, "focus": []}]}]}]})";

ActivationTarget process(Pid pid) { return {.pid = pid}; }

TEST(SwayTree, OfSeveralWindowsTheOneThatWasInFrontLastIsChosen) { EXPECT_EQ(bestWindow(tree, process(100)), 32); }

TEST(SwayTree, FloatingWindowsAndThoseOfXwaylandAreFound) {
  EXPECT_EQ(bestWindow(tree, process(200)), 41);
  auto entry = std::make_shared<DesktopEntry>();
  entry->id = "playerwindow";
  EXPECT_EQ(bestWindow(tree, {.pid = 7, .entry = entry}), 41);
}

TEST(SwayTree, TheWindowWithTheWantedTitleIsChosen) {
  ActivationTarget target = process(100);
  target.title = "Inbox";
  EXPECT_EQ(bestWindow(tree, target), 31);
  target.title = "Outbox";
  EXPECT_EQ(bestWindow(tree, target), 32);
}

TEST(SwayTree, AProcessWithoutAWindowGetsNone) { EXPECT_FALSE(bestWindow(tree, process(7))); }

TEST(SwayTree, NonsenseHoldsNoWindow) {
  for (const char* text : {"", "nonsense", "[]", "null", R"({"focus": 7, "nodes": "x", "pid": "100"})"})
    EXPECT_FALSE(bestWindow(text, process(100))) << text;
  QByteArray deep;
  for (int i = 0; i < 1000; ++i) deep += R"({"id":1,"focus":[1],"nodes":[)";
  EXPECT_FALSE(bestWindow(deep, process(100)));
}

}  // namespace
}  // namespace tollvane
