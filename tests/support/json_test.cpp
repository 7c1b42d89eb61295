#include "support/json.h"

#include <gtest/gtest.h>

#include "support/json_value.h"

namespace tollvane {
namespace {

TEST(JsonTest, ValuesMayNestSixtyFourLevels) {
  const auto nested = [](std::size_t lists) {
    return "{\"a\":" + std::string(lists, '[') + "\"\\\"[[[\"" + std::string(lists, ']') + "}";
  };
  EXPECT_TRUE(json::object(nested(63)));
  EXPECT_FALSE(json::object(nested(64)));
}

TEST(JsonTest, OnlyATextIsReadAsAText) {
  const auto object = *json::object(R"({"a": "x", "b": 1, "c": null, "d": ["x"]})");
  EXPECT_EQ(json::text(object, "a"), "x");
  for (const auto* key : {"b", "c", "d", "missing"}) EXPECT_EQ(json::text(object, key), std::nullopt) << key;
  EXPECT_EQ(json::text(nlohmann::json::array({"a"}), "a"), std::nullopt);
}

TEST(JsonTest, OnlyAnObjectIsReadAsAnObject) {
  EXPECT_EQ(json::compact(*json::object(" {\"b\":1, \"a\" : [] } ")), "{\"a\":[],\"b\":1}");
  for (const auto* other : {"", "[]", "null", "7", "{", "{}x", "{\"a\":\"\xff\"}", "{\"a\":1e999}"})
    EXPECT_EQ(json::object(other), std::nullopt) << other;
}

TEST(JsonTest, WritingNeverFails) {
  EXPECT_EQ(json::compact({{"a", "\xff"}}), "{\"a\":\"\xef\xbf\xbd\"}");
  EXPECT_EQ(json::pretty({{"a", 1}}), "{\n  \"a\": 1\n}");
}

TEST(JsonTest, OnlyWholeNumbersAreReadAsWholeNumbers) {
  const auto object = *json::object(
      R"({"seven": 7, "minus": -7, "sevenAsDouble": 7.0, "most": 9223372036854775807, "least": -9223372036854775808,
          "half": 1.5, "huge": 1e300, "tooMuch": 9223372036854775808, "text": "7", "true": true, "null": null})");
  EXPECT_EQ(json::wholeNumber(object, "seven"), 7);
  EXPECT_EQ(json::wholeNumber(object, "minus"), -7);
  EXPECT_EQ(json::wholeNumber(object, "sevenAsDouble"), 7);
  EXPECT_EQ(json::wholeNumber(object, "most"), INT64_MAX);
  EXPECT_EQ(json::wholeNumber(object, "least"), INT64_MIN);
  for (const auto* key : {"half", "huge", "tooMuch", "text", "true", "null", "missing"})
    EXPECT_EQ(json::wholeNumber(object, key), std::nullopt) << key;
}

}  // namespace
}  // namespace tollvane
