#include "support/text.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

TEST(TextTest, TrimmingTakesAllWhiteSpaceAndNothingElse) {
  EXPECT_EQ(text::trimmed(""), "");
  EXPECT_EQ(text::trimmed(" \t\n\v\f\r\u0085\u00A0\u1680\u2000\u200A\u2028\u2029\u202F\u205F\u3000"), "");
  EXPECT_EQ(text::trimmed(" a b "), "a b");
  EXPECT_EQ(text::trimmed("\u200B"), "\u200B");  // the zero-width space is no white space
  EXPECT_EQ(text::trimmed(std::string_view("\0 ", 2)), std::string_view("\0", 1));
}

TEST(TextTest, TrimmingStopsAtBrokenBytes) {
  EXPECT_EQ(text::trimmed(" \xff "), "\xff");
  EXPECT_EQ(text::trimmed("\xe2\x80"), "\xe2\x80");
}

TEST(TextTest, APrefixEndsBetweenCharacters) {
  EXPECT_EQ(text::prefix("", 3), "");
  EXPECT_EQ(text::prefix("abc", 0), "");
  EXPECT_EQ(text::prefix("abc", 2), "ab");
  EXPECT_EQ(text::prefix("abc", 3), "abc");
  EXPECT_EQ(text::prefix("abc", 400), "abc");
  EXPECT_EQ(text::prefix("e\u0301x", 1), "e\u0301");
  EXPECT_EQ(text::prefix("\r\nx", 1), "\r\n");
  EXPECT_EQ(text::prefix("🇳🇴🇸🇪", 1), "🇳🇴");
}

}  // namespace
}  // namespace tollvane
