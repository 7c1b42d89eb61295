#include "platform/linux/system/json_defaults.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "model/prefs.h"
#include "platform/posix/posix_files.h"
#include "tests/support/temporary_directory.h"

namespace tollvane {
namespace {

class JsonDefaultsTest : public testing::Test {
 protected:
  JsonDefaults open() { return {files, home / "Tollvane/defaults.json"}; }
  static bool isStored(const Defaults& defaults, const char* key, bool value) {
    const auto found = defaults.object(key);
    return found && std::get_if<bool>(&*found) && std::get<bool>(*found) == value;
  }

  test::TemporaryDirectory home;
  PosixFiles files;
};

TEST_F(JsonDefaultsTest, AMissingFileHasNoValuesAndIsNotMadeByReading) {
  EXPECT_FALSE(open().object("markTabs"));
  EXPECT_FALSE(files.exists(home / "Tollvane"));
}

TEST_F(JsonDefaultsTest, TheFileIsForTheUserOnly) {
  open().set("markTabs", true);
  EXPECT_EQ(test::modeOf(home / "Tollvane/defaults.json"),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(JsonDefaultsTest, AProcessKilledRightAfterASetHasStoredIt) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    JsonDefaults defaults = open();
    defaults.set("hasLaunchedBefore", true);
    ::kill(::getpid(), SIGKILL);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  JsonDefaults defaults = open();
  EXPECT_TRUE(Prefs(defaults).hasLaunchedBefore());
}

TEST_F(JsonDefaultsTest, ACorruptFileIsKeptUnderAnotherName) {
  int count = 0;
  for (const auto* broken : {"{\"markTabs\": tr", "[1]", "", "\xff\xfe"}) {
    const std::string number = ++count == 1 ? "" : "-" + std::to_string(count);
    home.write("Tollvane/defaults.json", broken);
    JsonDefaults defaults = open();
    EXPECT_FALSE(defaults.object("markTabs"));
    EXPECT_EQ(home.read("Tollvane/defaults.json.corrupt" + number), broken) << "and no older one is lost";
    EXPECT_FALSE(files.exists(home / "Tollvane/defaults.json"));
    defaults.set("markTabs", true);
    EXPECT_EQ(home.read("Tollvane/defaults.json"), "{\n  \"markTabs\": true\n}\n");
    std::filesystem::remove(home / "Tollvane/defaults.json");
  }
}

TEST_F(JsonDefaultsTest, ASetKeepsWhatOthersHaveWrittenMeanwhile) {
  JsonDefaults one = open();
  JsonDefaults other = open();
  one.set("markTabs", true);
  other.set("suggestExtension", false);
  JsonDefaults defaults = open();
  EXPECT_TRUE(isStored(defaults, "markTabs", true));
  EXPECT_TRUE(isStored(defaults, "suggestExtension", false));
}

TEST_F(JsonDefaultsTest, WhatOthersWriteCountsAtTheNextQuestion) {
  const JsonDefaults defaults = open();
  home.write("Tollvane/defaults.json", R"({"markTabs": true})");
  EXPECT_TRUE(isStored(defaults, "markTabs", true));
  home.write("Tollvane/defaults.json", "{}");
  EXPECT_FALSE(defaults.object("markTabs"));
}

TEST_F(JsonDefaultsTest, AFileThatBreaksMeanwhileIsKeptAndSoAreTheValues) {
  JsonDefaults defaults = open();
  defaults.set("markTabs", true);
  home.write("Tollvane/defaults.json", "broken");
  defaults.set("suggestExtension", false);
  EXPECT_EQ(home.read("Tollvane/defaults.json.corrupt"), "broken");
  EXPECT_TRUE(isStored(open(), "markTabs", true));
}

// As for a user whom the file's mode or a failing disk forbids it.
class UnreadableFiles : public PosixFiles {
 public:
  std::optional<std::string> read(const std::filesystem::path&, std::size_t) const override { return std::nullopt; }
};

TEST_F(JsonDefaultsTest, AFileThatCannotBeReadStaysAsItIs) {
  home.write("Tollvane/defaults.json", "{}");
  UnreadableFiles unreadable;
  JsonDefaults defaults(unreadable, home / "Tollvane/defaults.json");
  defaults.set("markTabs", true);
  EXPECT_TRUE(isStored(defaults, "markTabs", true)) << "for this run";
  EXPECT_EQ(home.read("Tollvane/defaults.json"), "{}");
  EXPECT_FALSE(files.exists(home / "Tollvane/defaults.json.corrupt"));
}

TEST_F(JsonDefaultsTest, ValuesOfOtherTypesAreKeptButNotReturned) {
  home.write("Tollvane/defaults.json", R"({"suggestExtension": "no", "markTabs": ["x"], "other": null})");
  JsonDefaults defaults = open();
  EXPECT_TRUE(std::holds_alternative<Defaults::Other>(*defaults.object("suggestExtension")));
  EXPECT_TRUE(Prefs(defaults).suggestExtension());
  EXPECT_FALSE(Prefs(defaults).markTabs());
  EXPECT_EQ(defaults.object("other"), std::nullopt);
}

TEST_F(JsonDefaultsTest, MembersOfOtherVersionsAreKept) {
  home.write("Tollvane/defaults.json", R"({"fromTheFuture": {"a": [1, "x"]}})");
  open().set("markTabs", true);
  EXPECT_NE(home.read("Tollvane/defaults.json").find("fromTheFuture"), std::string::npos);
}

TEST_F(JsonDefaultsTest, WithoutAPlaceToStoreValuesAreKeptForThisRun) {
  home.write("file", "in the way");
  JsonDefaults blocked(files, home / "file/defaults.json");
  blocked.set("markTabs", true);
  EXPECT_TRUE(Prefs(blocked).markTabs());
  JsonDefaults homeless(files, std::nullopt);
  homeless.set("markTabs", true);
  EXPECT_TRUE(Prefs(homeless).markTabs());
}

}  // namespace
}  // namespace tollvane
