#include "browser/safari_inbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_value.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SafariInboxTest : public testing::Test {
 protected:
  SafariInboxTest() {
    inbox.onMessage = [this](const Message& message) { messages.push_back(message); };
    system.files.createDirectories(directory);
  }
  void put(const std::string& name, const std::string& content) { system.files.contents[directory / name] = content; }

  const std::filesystem::path directory = "/support/safari-inbox";
  test::VirtualPlatform system;
  SafariInbox inbox{system.queue, system.files};
  std::vector<Message> messages;
};

TEST_F(SafariInboxTest, FilesAreHandledInTheOrderOfTheirNamesAndRemoved) {
  inbox.start(directory);
  put("2.json", R"({"n":2})");
  put("1.json", R"({"n":1})");
  system.queue.directoryChanged(directory);
  EXPECT_THAT(messages, ElementsAre(Message{{"n", 1}}, Message{{"n", 2}}));
  EXPECT_THAT(system.files.contents, IsEmpty());
}

TEST_F(SafariInboxTest, OtherFilesAreLeftAlone) {
  inbox.start(directory);
  put("note.txt", R"({"n":1})");
  put("1.json.tmp", R"({"n":1})");
  system.queue.directoryChanged(directory);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(system.files.contents.size(), 2u);
}

TEST_F(SafariInboxTest, AFileWithoutAMessageIsRemovedAndLaterOnesAreHandled) {
  inbox.start(directory);
  put("1.json", "{");
  put("2.json", "[]");
  put("3.json", "");
  put("4.json", R"({"n":4})");
  system.files.unreadable.insert(directory / "5.json");
  put("5.json", R"({"n":5})");
  system.queue.directoryChanged(directory);
  EXPECT_THAT(messages, ElementsAre(Message{{"n", 4}}));
  EXPECT_THAT(system.files.contents, IsEmpty());
}

TEST_F(SafariInboxTest, FilesThatWereThereBeforeAreHandledAtTheStart) {
  put("1.json", R"({"n":1})");
  inbox.start(directory);
  EXPECT_THAT(messages, ElementsAre(Message{{"n", 1}}));
}

TEST_F(SafariInboxTest, ADirectoryThatIsMissingIsMade) {
  system.files.directories.clear();
  inbox.start(directory);
  EXPECT_TRUE(system.files.directories.contains(directory));
}

TEST_F(SafariInboxTest, WithoutAWatchNothingIsTaken) {
  put("1.json", R"({"n":1})");
  system.queue.cannotWatchDirectories = true;
  inbox.start(directory);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(system.files.contents.size(), 1u);
}

}  // namespace
}  // namespace tollvane
