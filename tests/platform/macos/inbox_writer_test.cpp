// Tests of the messages that Safari's extension leaves for Tollvane.
#include "extension/safari/inbox_writer.h"

#include <gtest/gtest.h>

#include "browser/safari_inbox.h"
#include "platform/posix/posix_files.h"
#include "support/json_value.h"
#include "tests/support/temporary_directory.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane::test {
namespace {

constexpr std::int64_t now = 1'763'800'000'000'000;  // microseconds since 1970, in 2025

class InboxWriterTest : public ::testing::Test {
 protected:
  std::vector<std::string> names() const {
    auto names = files.list("/inbox").value_or(std::vector<std::string>());
    std::sort(names.begin(), names.end());
    return names;
  }
  std::vector<std::string> messages() const {
    std::vector<std::string> messages;
    for (const auto& name : names()) messages.push_back(files.contents.at("/inbox/" + name));
    return messages;
  }

  VirtualFiles files;
  InboxWriter writer{files, "/inbox", 42};
};

TEST_F(InboxWriterTest, NamesSortInTheOrderOfTheMessages) {
  for (const std::string message : {"1", "2", "3"}) EXPECT_TRUE(writer.write(message, now));
  EXPECT_TRUE(writer.write("4", now + 9));
  EXPECT_EQ(messages(), (std::vector<std::string>{"1", "2", "3", "4"}));
}

TEST_F(InboxWriterTest, TheOrderStaysIfTheClockIsSetBack) {
  writer.write("1", now);
  writer.write("2", now - 5'000'000);
  EXPECT_EQ(messages(), (std::vector<std::string>{"1", "2"}));
}

TEST_F(InboxWriterTest, ALaterWriterContinuesTheOrder) {
  writer.write("1", now);
  InboxWriter later(files, "/inbox", 7);
  later.write("2", now + 1);
  later.write("3", 10 * now);  // one digit more
  EXPECT_EQ(messages(), (std::vector<std::string>{"1", "2", "3"}));
}

TEST_F(InboxWriterTest, TwoWritersAtTheSameMomentDoNotDisturbEachOther) {
  InboxWriter other(files, "/inbox", 43);
  writer.write("1", now);
  other.write("2", now);
  EXPECT_EQ(messages(), (std::vector<std::string>{"1", "2"}));
}

TEST_F(InboxWriterTest, OnAFullDiskNothingIsLeft) {
  files.createDirectories("/inbox");
  files.full = true;
  EXPECT_FALSE(writer.write("1", now));
  EXPECT_TRUE(names().empty());
  files.full = false;
  EXPECT_TRUE(writer.write("2", now));
}

TEST_F(InboxWriterTest, AFolderThatCannotBeMadeIsAFailure) {
  files.readOnly = true;
  EXPECT_FALSE(writer.write("1", now));
}

TEST_F(InboxWriterTest, OnlyTheNewestMessagesAreKeptWhileNobodyTakesThem) {
  files.createDirectories("/inbox");
  files.contents["/inbox/another.txt"] = "stays";
  for (std::size_t i = 0; i < InboxWriter::mostWaiting + 3; ++i) writer.write(std::to_string(i), now);
  EXPECT_EQ(names().size(), InboxWriter::mostWaiting + 1);
  EXPECT_EQ(messages().front(), "3");
  EXPECT_TRUE(files.contents.contains("/inbox/another.txt"));
}

TEST_F(InboxWriterTest, AMessageThatIsTooLongIsRefused) {
  EXPECT_TRUE(writer.write(std::string(InboxWriter::longestMessage, 'x'), now));
  EXPECT_FALSE(writer.write(std::string(InboxWriter::longestMessage + 1, 'x'), now));
}

TEST(SafariInboxAndWriterTest, TollvaneReadsWhatTheHandlerWrites) {
  const TemporaryDirectory directory;
  PosixFiles files;
  VirtualClock clock;
  VirtualMainQueue queue(clock);
  InboxWriter writer(files, directory / "inbox", 42);
  writer.write(R"({"type":"hello"})", now);
  writer.write(R"({"type":"audible"})", now);
  SafariInbox inbox(queue, files);
  std::string types;
  inbox.onMessage = [&](const Message& message) { types += message.at("type").get<std::string>() + ' '; };
  inbox.start(directory / "inbox");
  EXPECT_EQ(types, "hello audible ");
  EXPECT_TRUE(files.list(directory / "inbox")->empty());
}

}  // namespace
}  // namespace tollvane::test
