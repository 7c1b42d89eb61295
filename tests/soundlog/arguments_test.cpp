#include "soundlog/arguments.h"

#include <gtest/gtest.h>

#include <vector>

namespace tollvane::soundlog {
namespace {

Arguments parse(std::vector<const char*> words) { return parseArguments(words); }

bool isStream(const Arguments& arguments, Stream::Style style) {
  const auto* stream = std::get_if<Stream>(&arguments);
  return stream && stream->style == style;
}

std::string mistakeOf(const Arguments& arguments) {
  const auto* mistake = std::get_if<Mistake>(&arguments);
  return mistake ? mistake->sentence : "";
}

TEST(Arguments, TheArgumentsThatTollvaneUsesAskForAStreamOfJsonLines) {
  EXPECT_TRUE(isStream(parse({"stream", "--style", "ndjson", "--predicate", "process == \"a\" AND --help"}),
                       Stream::Style::ndjson));
}

TEST(Arguments, AStreamIsForPeopleUnlessJsonIsAskedFor) {
  EXPECT_TRUE(isStream(parse({"stream"}), Stream::Style::readable));
  EXPECT_TRUE(isStream(parse({"stream", "--style=readable"}), Stream::Style::readable));
  EXPECT_TRUE(isStream(parse({"--style=ndjson", "stream"}), Stream::Style::ndjson));
}

TEST(Arguments, APredicateMayLookLikeAnOption) {
  EXPECT_TRUE(isStream(parse({"stream", "--predicate", "--nonsense"}), Stream::Style::readable));
  EXPECT_TRUE(isStream(parse({"stream", "--predicate="}), Stream::Style::readable));
  EXPECT_TRUE(isStream(parse({"stream", "--predicate", ""}), Stream::Style::readable));
}

TEST(Arguments, HelpAndVersionAreUnderstoodAnywhere) {
  EXPECT_TRUE(std::holds_alternative<Help>(parse({"--help"})));
  EXPECT_TRUE(std::holds_alternative<Help>(parse({"stream", "-h"})));
  EXPECT_TRUE(std::holds_alternative<Version>(parse({"--version"})));
  EXPECT_NE(usage().find("--predicate"), std::string_view::npos);
}

TEST(Arguments, EveryMistakeIsOneSentenceThatNamesIt) {
  EXPECT_NE(mistakeOf(parse({})).find("stream"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"show"})).find("'show'"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"stream", "stream"})).find("'stream'"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"stream", "--colour"})).find("'--colour'"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"stream", "--style"})).find("--style"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"stream", "--style", "xml"})).find("'xml'"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"stream", "--predicate"})).find("--predicate"), std::string::npos);
  EXPECT_NE(mistakeOf(parse({"--help=yes"})).find("'--help'"), std::string::npos);
}

TEST(Arguments, TheSentenceAboutAMistakeStaysOnOneLine) {
  EXPECT_EQ(mistakeOf(parse({"stream", "a\nb\x1B[2J"})).find_first_of("\n\x1B"), std::string::npos);
}

}  // namespace
}  // namespace tollvane::soundlog
