#include "platform/linux/drawing/plain_text.h"

#include <gtest/gtest.h>

#include <string>

namespace tollvane {
namespace {

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

constexpr auto ellipsis = "\u2026";

TEST(PlainToolTip, OrdinaryTextIsKept) { EXPECT_EQ(plainToolTip("Mail · 14:03"), "Mail · 14:03"); }

TEST(PlainToolTip, EmptyTextStaysEmpty) { EXPECT_EQ(plainToolTip(""), ""); }

TEST(PlainToolTip, MarkupBecomesLookAlikes) {
  EXPECT_EQ(plainToolTip("<b>Tom & Jerry</b>"), "\u2039b\u203ATom \uFF06 Jerry\u2039/b\u203A");
}

TEST(PlainToolTip, EntitiesAreNotReadAsCharacters) { EXPECT_EQ(plainToolTip("&lt;"), "\uFF06lt;"); }

TEST(PlainToolTip, QuotesAreKept) { EXPECT_EQ(plainToolTip("\"it's\""), "\"it's\""); }

TEST(PlainToolTip, EachControlCharacterBecomesABlank) {
  EXPECT_EQ(plainToolTip(std::string("a\0b\tc\nd\re\x1b"
                                     "f\x7fg",
                                     13)),
            "a b c d e f g");
  EXPECT_EQ(plainToolTip("a\u0080b\u009Fc"), "a b c");
}

TEST(PlainToolTip, LineAndParagraphSeparatorsBecomeBlanks) { EXPECT_EQ(plainToolTip("a\u2028b\u2029c"), "a b c"); }

TEST(PlainToolTip, BidiControlsAreDropped) {
  EXPECT_EQ(plainToolTip("a\u202Ab\u202Bc\u202Cd\u202De\u202Ef"), "abcdef");
  EXPECT_EQ(plainToolTip("a\u2066b\u2067c\u2068d\u2069e"), "abcde");
  EXPECT_EQ(plainToolTip("a\u200Eb\u200Fc\u061Cd"), "abcd");
}

TEST(PlainToolTip, NeighboursOfTheBidiControlsAreKept) {
  // The zero-width joiner combines emoji, and Persian is spelt with the zero-width non-joiner.
  EXPECT_EQ(plainToolTip("\u200C\u200D\u2030\u2065\u061B"), "\u200C\u200D\u2030\u2065\u061B");
}

TEST(PlainToolTip, RightToLeftLettersAreKept) { EXPECT_EQ(plainToolTip("שלום"), "שלום"); }

TEST(PlainToolTip, CharactersBeyondTheBasicPlaneAreKept) { EXPECT_EQ(plainToolTip("🔔 rings"), "🔔 rings"); }

TEST(PlainToolTip, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  EXPECT_EQ(plainToolTip("a\xff"
                         "b"),
            "a\uFFFD"
            "b");
  EXPECT_EQ(plainToolTip("a\xed\xa0\x80").find('\xed'), std::string::npos) << "a lone surrogate would break the bus";
}

TEST(PlainToolTip, ALongNameLosesItsMiddleAndTheTimeStays) {
  const std::string tip = plainToolTip("Last sound: " + repeated("x", 5000) + " at 3:07:42 PM · 12 unseen");
  EXPECT_EQ(tip, "Last sound: " + repeated("x", 68) + ellipsis + repeated("x", 53) + " at 3:07:42 PM · 12 unseen");
}

std::string line(std::string_view text) { return plainLine(text).toStdString(); }

TEST(PlainLine, ThreeHundredCharactersAreKept) { EXPECT_EQ(line(repeated("x", 300)), repeated("x", 300)); }

TEST(PlainLine, TheThreeHundredAndFirstCharacterBecomesAnEllipsis) {
  EXPECT_EQ(line(repeated("x", 301)), repeated("x", 300) + ellipsis);
}

TEST(PlainLine, CharactersAreCountedAsPeopleSeeThem) {
  const std::string flag = "🇩🇪";
  const std::string accented = "e\u0301";
  EXPECT_EQ(line(repeated(flag, 300)), repeated(flag, 300));
  EXPECT_EQ(line(repeated(flag, 301)), repeated(flag, 300) + ellipsis);
  EXPECT_EQ(line(repeated(accented, 301)), repeated(accented, 300) + ellipsis);
}

TEST(PlainLine, ACharacterWithEndlessMarksIsCutToo) {
  const std::string tower = "Z" + repeated("\u0301", 100000);
  const std::string plain = line(tower);
  EXPECT_EQ(plain, "Z" + repeated("\u0301", 2399) + ellipsis);
}

TEST(PlainLine, ACharacterWithEndlessMarksBehindOtherTextIsDropped) {
  EXPECT_EQ(line("ab" + repeated("Z" + repeated("\u0301", 3000), 200)), std::string("ab") + ellipsis);
}

TEST(PlainLine, AMegabyteIsCut) { EXPECT_EQ(line(std::string(1 << 20, 'x')), repeated("x", 300) + ellipsis); }

TEST(PlainLine, TextIsMeasuredAfterBidiControlsAreDropped) { EXPECT_EQ(line(repeated("\u202E", 500) + "end"), "end"); }

}  // namespace
}  // namespace tollvane
