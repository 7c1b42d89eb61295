#include "support/line_buffer.h"

#include <gtest/gtest.h>

#include <vector>

namespace tollvane {
namespace {

std::vector<std::string> drain(LineBuffer& buffer) {
  std::vector<std::string> lines;
  while (const auto line = buffer.next()) lines.emplace_back(*line);
  return lines;
}

using Lines = std::vector<std::string>;

TEST(LineBufferTest, LinesComeWholeAndInOrder) {
  LineBuffer buffer(1000);
  EXPECT_EQ(drain(buffer), Lines{});
  buffer.append("one\ntwo\nthr");
  EXPECT_EQ(drain(buffer), (Lines{"one", "two"}));
  buffer.append("ee");
  EXPECT_EQ(drain(buffer), Lines{});
  buffer.append("\n\nfour\n");
  EXPECT_EQ(drain(buffer), (Lines{"three", "", "four"}));
}

TEST(LineBufferTest, OnlyTheNewlineEndsALine) {
  LineBuffer buffer(1000);
  buffer.append(std::string_view("a\rb\0c\r\n", 7));
  EXPECT_EQ(drain(buffer), (Lines{std::string("a\rb\0c\r", 6)}));
}

TEST(LineBufferTest, EverySplitGivesTheSameLines) {
  const std::string whole = "first\n\nthird line\nrest";
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    LineBuffer buffer(1000);
    buffer.append(whole.substr(0, cut));
    Lines lines = drain(buffer);
    buffer.append(whole.substr(cut));
    for (auto& line : drain(buffer)) lines.push_back(line);
    EXPECT_EQ(lines, (Lines{"first", "", "third line"})) << "cut at " << cut;
  }
}

TEST(LineBufferTest, ALineThatNeverEndsIsDroppedAndTheNextIsRead) {
  LineBuffer buffer(10);
  for (int i = 0; i < 1000; ++i) {
    buffer.append("endless");
    EXPECT_EQ(drain(buffer), Lines{});
  }
  buffer.append(" still the same\nnext\n");
  EXPECT_EQ(drain(buffer), Lines{"next"});
}

TEST(LineBufferTest, ALineOfTheGreatestLengthIsKept) {
  LineBuffer buffer(10);
  buffer.append("0123456789");
  EXPECT_EQ(drain(buffer), Lines{});
  buffer.append("\nx\n");
  EXPECT_EQ(drain(buffer), (Lines{"0123456789", "x"}));
}

TEST(LineBufferTest, ALongerLineIsDroppedEvenIfItComesWhole) {
  LineBuffer buffer(10);
  buffer.append("01234567890\nx\n");
  EXPECT_EQ(drain(buffer), Lines{"x"});
  buffer.append("0123456789");
  EXPECT_EQ(drain(buffer), Lines{});
  buffer.append("0\ny\n");
  EXPECT_EQ(drain(buffer), Lines{"y"});
}

TEST(LineBufferTest, LinesMayBeReadBetweenAppends) {
  LineBuffer buffer(1000);
  buffer.append("one\ntwo\n");
  EXPECT_EQ(buffer.next(), "one");
  buffer.append("three\n");
  EXPECT_EQ(drain(buffer), (Lines{"two", "three"}));
}

}  // namespace
}  // namespace tollvane
