#include "model/paths.h"

#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

class PathsTest : public testing::Test {
 protected:
  test::VirtualLocations locations;
  test::VirtualFiles files;
  Paths paths{locations, files};
};

TEST_F(PathsTest, AllPathsAreInTheSupportDirectory) {
  EXPECT_EQ(paths.supportDir(), "/home/user/Application Support/Tollvane");
  EXPECT_EQ(paths.history(), "/home/user/Application Support/Tollvane/history.txt");
  EXPECT_EQ(paths.bridgeSocket(), "/home/user/Application Support/Tollvane/bridge.sock");
}

TEST_F(PathsTest, AskingForTheHistoryMakesTheDirectoryFirst) {
  EXPECT_TRUE(files.directories.empty());
  paths.history();
  EXPECT_TRUE(files.directories.contains("/home/user/Application Support/Tollvane"));
  EXPECT_TRUE(files.directories.contains("/home/user/Application Support"));
}

TEST_F(PathsTest, TheDirectoryIsFoundOnceAndStays) {
  paths.history();
  locations.support = "/elsewhere";
  EXPECT_EQ(paths.supportDir(), "/home/user/Application Support/Tollvane");
  EXPECT_EQ(locations.asked, 1);
}

TEST_F(PathsTest, ADirectoryThatCannotBeMadeIsStillNamed) {
  files.readOnly = true;
  EXPECT_EQ(paths.history(), "/home/user/Application Support/Tollvane/history.txt");
  EXPECT_TRUE(files.directories.empty());
}

TEST_F(PathsTest, ALongSocketPathIsNotCut) {
  locations.support = "/" + std::string(200, 'd');
  EXPECT_EQ(paths.bridgeSocket(), "/" + std::string(200, 'd') + "/Tollvane/bridge.sock");
}

TEST_F(PathsTest, AUserWithoutAnyPlaceForDataIsFatal) {
  locations.support.reset();
  EXPECT_DEATH(paths.supportDir(), "Tollvane: there is no directory for this user's application data\\.");
}

}  // namespace
}  // namespace tollvane
