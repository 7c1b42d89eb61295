#include "bridge/message_kind.h"

#include <gtest/gtest.h>

#include <string>

namespace tollvane::bridge {
namespace {

TEST(MessageKindTest, AnObjectIsAMessage) {
  for (const auto* text :
       {"{}", " {\"type\" : \"audible\", \"tabId\": 7}\r\n", R"({"a":[{"b":null},true,-1.5e3,"é"]})"})
    EXPECT_EQ(kindOf(text), MessageKind::other) << text;
}

TEST(MessageKindTest, AnythingElseIsNoMessage) {
  for (const auto* text : {"", " ", "[]", "7", "\"hello\"", "null", "{", "}", "{}{}", "{},", "{\"a\"}", "{\"a\":}",
                           "{\"a\":1,}", "{'a':1}", "{\"a\":01}", "{\"a\":\"\n\"}", "{\"a\":\"\\x\"}", "nonsense"})
    EXPECT_EQ(kindOf(text), MessageKind::malformed) << text;
}

TEST(MessageKindTest, TextThatIsNotUtf8IsNoMessage) {
  for (const auto* text :
       {"{\"a\":\"\xFF\"}", "{\"a\":\"\xC0\xAF\"}", "{\"a\":\"\xED\xA0\x80\"}", "{\"a\":\"\xE2\x82\"}"})
    EXPECT_EQ(kindOf(text), MessageKind::malformed) << text;
}

TEST(MessageKindTest, ATextWithAZeroByteIsNoMessage) {
  using namespace std::string_view_literals;
  EXPECT_EQ(kindOf("{}\0"sv), MessageKind::malformed);
  EXPECT_EQ(kindOf("{}\0\n{}"sv), MessageKind::malformed);
}

TEST(MessageKindTest, ATextWithAByteOrderMarkIsNoMessage) {
  EXPECT_EQ(kindOf("\xEF\xBB\xBF{}"), MessageKind::malformed);
}

TEST(MessageKindTest, AHelloIsKnownByItsType) {
  EXPECT_EQ(kindOf(R"({"type":"hello"})"), MessageKind::hello);
  EXPECT_EQ(kindOf(R"({"version":"1.0","x":{"type":"audible"},"type":"hello"})"), MessageKind::hello);
  EXPECT_EQ(kindOf(R"({"t\u0079pe":"\u0068ello"})"), MessageKind::hello);
}

TEST(MessageKindTest, TheWordHelloElsewhereDoesNotMakeAHello) {
  for (const auto* text :
       {R"({"type":"Hello"})", R"({"type":["hello"]})", R"({"a":{"type":"hello"}})", R"({"a":[{"type":"hello"}]})",
        R"({"title":"hello"})", R"({"type":7,"title":"hello"})", R"({"type":{"a":1},"title":"hello"})"})
    EXPECT_EQ(kindOf(text), MessageKind::other) << text;
}

TEST(MessageKindTest, TheLastOfSeveralTypesCounts) {
  EXPECT_EQ(kindOf(R"({"type":"audible","type":"hello"})"), MessageKind::hello);
  for (const auto* last : {R"("audible")", "null", "true", "7", "-7", "1.5", "{}", "[]", R"({"a":"hello"})"})
    EXPECT_EQ(kindOf(R"({"type":"hello","type":)" + std::string(last) + "}"), MessageKind::other) << last;
}

TEST(MessageKindTest, DeepNestingCostsNeitherStackNorTime) {
  const std::size_t depth = 1'000'000;
  const std::string open = "{\"a\":" + std::string(depth, '[');
  EXPECT_EQ(kindOf(open), MessageKind::malformed);
  EXPECT_EQ(kindOf(open + std::string(depth, ']') + "}"), MessageKind::other);
}

}  // namespace
}  // namespace tollvane::bridge
