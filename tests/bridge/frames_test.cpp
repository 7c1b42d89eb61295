#include "bridge/frames.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace tollvane::bridge {
namespace {

std::string header(std::uint32_t length) {
  std::string bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  return bytes;
}

std::vector<std::string> bodies(FrameReader& reader, std::string_view bytes) {
  std::vector<std::string> result;
  while (auto body = reader.next(bytes)) result.push_back(*body);
  EXPECT_TRUE(bytes.empty());
  return result;
}

using Bodies = std::vector<std::string>;

TEST(FramesTest, AFrameIsItsLengthAndItsBytes) { EXPECT_EQ(frame("{}"), header(2) + "{}"); }

TEST(FramesTest, SeveralFramesInOneReadComeOutInOrder) {
  FrameReader reader(100);
  EXPECT_EQ(bodies(reader, frame("one") + frame("") + frame("three")), (Bodies{"one", "", "three"}));
}

TEST(FramesTest, ACutAtAnyByteChangesNothing) {
  const std::string bytes = frame("one") + frame("") + frame(std::string(12, 'x')) + frame("four");
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    FrameReader reader(10);
    Bodies all = bodies(reader, bytes.substr(0, cut));
    for (auto& body : bodies(reader, bytes.substr(cut))) all.push_back(body);
    EXPECT_EQ(all, (Bodies{"one", "", "four"})) << cut;
  }
}

TEST(FramesTest, BytesMayComeOneByOne) {
  FrameReader reader(10);
  Bodies all;
  for (const char byte : frame("one") + frame(std::string(11, 'x')) + frame("three"))
    for (auto& body : bodies(reader, {&byte, 1})) all.push_back(body);
  EXPECT_EQ(all, (Bodies{"one", "three"}));
}

TEST(FramesTest, AFrameOfTheGreatestLengthIsReadAndALongerOneIsSkipped) {
  FrameReader reader(5);
  EXPECT_EQ(bodies(reader, frame("12345") + frame("123456") + frame("1")), (Bodies{"12345", "1"}));
}

TEST(FramesTest, AFrameThatIsNeverFinishedGivesNothing) {
  FrameReader reader(longestFromBrowser);
  EXPECT_EQ(bodies(reader, header(longestFromBrowser) + "abc"), Bodies());
  FrameReader passing(longestFromBrowser);
  EXPECT_EQ(bodies(passing, header(0xFFFFFFFF) + std::string(100'000, 'x')), Bodies());
}

}  // namespace
}  // namespace tollvane::bridge
