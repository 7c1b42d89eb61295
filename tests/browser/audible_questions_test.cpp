#include "browser/audible_questions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_value.h"
#include "tests/support/recording_connection.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AudibleQuestionsTest : public testing::Test {
 protected:
  using Profile = std::shared_ptr<test::RecordingConnection>;

  void ask(const AudibleQuestions::Extensions& extensions) {
    questions.ask(extensions, [this](const AudibleTabs& tabs) { counts.push_back(tabs.count); });
  }
  bool count(const Profile& from, const Message& tabs) {
    return questions.answered(*from, {{"type", "audibleCount"}, {"count", tabs}});
  }

  test::VirtualPlatform system;
  AudibleQuestions questions{system.queue};
  Profile work = std::make_shared<test::RecordingConnection>(Browser::firefox);
  Profile home = std::make_shared<test::RecordingConnection>(Browser::firefox);
  std::vector<int> counts;
};

TEST_F(AudibleQuestionsTest, AReportThatWasNotAskedForIsNoAnswer) {
  ask({work});
  for (const Message& message : {Message{{"type", "audible"}, {"tabId", 1}}, Message{{"type", "audible"}, {"asked", 1}},
                                 Message{{"type", "audible"}, {"asked", false}}, Message{{"type", "hello"}}})
    EXPECT_FALSE(questions.answered(*work, message));
  EXPECT_THAT(counts, IsEmpty());
}

TEST_F(AudibleQuestionsTest, ANumberThatIsNoneMeansSeveral) {
  for (const Message& number : {Message("1"), Message(nullptr), Message(1.5), Message(1e300)}) {
    ask({work});
    EXPECT_TRUE(count(work, number));
  }
  EXPECT_THAT(counts, testing::AllOf(testing::SizeIs(4), testing::Each(testing::Gt(1))));
}

TEST_F(AudibleQuestionsTest, NumbersOfAnySizeAreAddedWithoutHarm) {
  for (const std::int64_t number : {INT64_MAX, INT64_MIN}) {
    ask({work, home});
    count(work, number);
    count(home, number);
  }
  EXPECT_THAT(counts, ElementsAre(testing::Gt(1), 0));
}

TEST_F(AudibleQuestionsTest, AnExtensionAnswersItsQuestionsInTheirOrder) {
  ask({work, home});
  ask({work});
  count(work, 3);
  EXPECT_THAT(counts, IsEmpty());
  count(work, 4);
  EXPECT_THAT(counts, ElementsAre(4));
  count(home, 5);
  EXPECT_THAT(counts, ElementsAre(4, 8));
}

TEST_F(AudibleQuestionsTest, AQuestionToAProfileThatGoesAwayHasNoAnswer) {
  ask({work, home});
  count(home, 1);
  questions.closed(*work);
  count(work, 0);
  EXPECT_THAT(counts, IsEmpty());
}

TEST_F(AudibleQuestionsTest, AnOldQuestionDoesNotTakeTheAnswerOfANewOne) {
  ask({work});
  system.queue.advance(AudibleQuestions::patience);
  ask({work, home});
  count(work, 3);
  count(home, 4);
  EXPECT_THAT(counts, ElementsAre(7));
}

TEST_F(AudibleQuestionsTest, ACompletionMayAskAgain) {
  questions.ask({work}, [this](const AudibleTabs&) { ask({work}); });
  count(work, 1);
  count(work, 2);
  EXPECT_THAT(counts, ElementsAre(2));
}

TEST_F(AudibleQuestionsTest, WithoutAnExtensionNobodyIsAsked) {
  ask({});
  EXPECT_TRUE(system.queue.idle());
}

}  // namespace
}  // namespace tollvane
