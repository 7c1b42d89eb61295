#include <gtest/gtest.h>

#include <memory>

#include "soundlog/notifications.h"

namespace tollvane::soundlog {
namespace {

// Writes a call of Notify and reads it back as the bus would deliver it.
class NoticeTest : public ::testing::Test {
 protected:
  NoticeTest() {
    sd_bus_new(&bus_);
    // Messages can be made for a connection that was started, even if nothing answers on it.
    sd_bus_set_address(bus_, "unixexec:path=/bin/cat");
    sd_bus_start(bus_);
    EXPECT_GE(sd_bus_message_new_method_call(bus_, &call_, "a.b", "/", "a.b", "Notify"), 0);
  }
  ~NoticeTest() override {
    sd_bus_message_unref(call_);
    sd_bus_close_unref(bus_);
  }

  void begin(const char* name) {
    sd_bus_message_append(call_, "susss", name, 7, "icon", "Summary", "Body");
    sd_bus_message_append(call_, "as", 2, "default", "Open");
    sd_bus_message_open_container(call_, 'a', "{sv}");
  }
  template <typename... Values>
  void hint(const char* name, const char* type, Values... values) {
    EXPECT_GE(sd_bus_message_append(call_, "{sv}", name, type, values...), 0);
  }
  std::optional<Notice> end() {
    sd_bus_message_close_container(call_);
    sd_bus_message_append(call_, "i", -1);
    return read();
  }
  std::optional<Notice> read() {
    EXPECT_GE(sd_bus_message_seal(call_, 1, 0), 0);
    sd_bus_message_rewind(call_, 1);
    return readNotice(call_);
  }

  sd_bus* bus_ = nullptr;
  sd_bus_message* call_ = nullptr;
};

TEST_F(NoticeTest, NameAndHintsAreRead) {
  begin("Mail");
  hint("urgency", "y", 1);
  hint("desktop-entry", "s", "org.example.Mail");
  hint("sender-pid", "x", std::int64_t{4242});
  const auto notice = end();
  ASSERT_TRUE(notice);
  EXPECT_EQ(notice->applicationName, "Mail");
  EXPECT_EQ(notice->desktopEntry, "org.example.Mail");
  EXPECT_EQ(notice->declaredSender, 4242);
}

TEST_F(NoticeTest, WithoutHintsOnlyTheNameIsKnown) {
  begin("Mail");
  const auto notice = end();
  ASSERT_TRUE(notice);
  EXPECT_EQ(notice->applicationName, "Mail");
  EXPECT_EQ(notice->desktopEntry, "");
  EXPECT_EQ(notice->declaredSender, std::nullopt);
}

TEST_F(NoticeTest, TheSendersProcessIdMayHaveAnyWidth) {
  begin("");
  hint("sender-pid", "u", std::uint32_t{42});
  EXPECT_EQ(end()->declaredSender, 42);
}

TEST_F(NoticeTest, ANumberThatIsNoProcessIdIsIgnored) {
  begin("");
  hint("sender-pid", "x", std::int64_t{1} << 40);
  EXPECT_EQ(end()->declaredSender, std::nullopt);
}

TEST_F(NoticeTest, HintsOfUnexpectedTypesAreSkipped) {
  begin("");
  hint("sender-pid", "s", "42");
  hint("desktop-entry", "as", 2, "a", "b");
  hint("x-vendor", "(ii)", 1, 2);
  hint("sound-name", "s", "bell");
  const auto notice = end();
  ASSERT_TRUE(notice);
  EXPECT_EQ(notice->declaredSender, std::nullopt);
  EXPECT_EQ(notice->desktopEntry, "");
}

TEST_F(NoticeTest, ACallWithOtherArgumentsIsNoNotice) {
  sd_bus_message_append(call_, "su", "Mail", 7);
  EXPECT_FALSE(read());
}

}  // namespace
}  // namespace tollvane::soundlog
