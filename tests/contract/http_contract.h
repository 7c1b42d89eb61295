// What every implementation of Http must do. `System` makes one, and a web site for it:
//
//   struct System {
//     Http& http;
//     // The address of a page of the site. The page answers with `answer`; if that is absent, it never answers.
//     std::string page(std::optional<HttpResponse> answer);
//     bool runUntil(const std::function<bool()>& condition);   // runs the event loop; false if it never came true
//     void run();                                              // runs the event loop for a moment
//   };
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>

#include "platform/http.h"

namespace tollvane::test {

template <typename System>
class HttpContract : public ::testing::Test {
 protected:
  void get(const std::string& url, Duration timeout = std::chrono::seconds(20)) {
    system.http.get({.url = url, .timeout = timeout}, [this](std::optional<HttpResponse> response) {
      ++answers;
      last = std::move(response);
    });
  }
  bool isAnswered() {
    return system.runUntil([this] { return answers > 0; });
  }

  System system;
  int answers = 0;
  std::optional<HttpResponse> last;
};

TYPED_TEST_SUITE_P(HttpContract);

TYPED_TEST_P(HttpContract, AnAnswerComesOnceAndLater) {
  this->get(this->system.page(HttpResponse{200, "{\"version\": \"1\"}"}));
  EXPECT_EQ(this->answers, 0) << "not at once";
  ASSERT_TRUE(this->isAnswered());
  this->system.run();
  EXPECT_EQ(this->answers, 1);
  ASSERT_TRUE(this->last);
  EXPECT_EQ(this->last->status, 200);
  EXPECT_EQ(this->last->body, "{\"version\": \"1\"}");
}

TYPED_TEST_P(HttpContract, ARefusalIsAnAnswerToo) {
  this->get(this->system.page(HttpResponse{404, "not here"}));
  ASSERT_TRUE(this->isAnswered());
  ASSERT_TRUE(this->last);
  EXPECT_EQ(this->last->status, 404);
}

TYPED_TEST_P(HttpContract, ASiteThatKeepsSilentGivesNoAnswerWhenTheTimeIsOver) {
  this->get(this->system.page(std::nullopt), std::chrono::milliseconds(30));
  ASSERT_TRUE(this->isAnswered());
  EXPECT_FALSE(this->last);
}

TYPED_TEST_P(HttpContract, AnAnswerThatIsTooLongCountsAsNoAnswer) {
  this->get(this->system.page(HttpResponse{200, std::string(Http::maxBody + 1, 'x')}));
  ASSERT_TRUE(this->isAnswered());
  EXPECT_FALSE(this->last);
}

TYPED_TEST_P(HttpContract, OnlyHttpsAndPlainHttpToThisComputerAreAllowed) {
  for (const char* url : {"", "nonsense", "file:///etc/hostname", "ftp://127.0.0.1/", "http://tollvane.invalid/"}) {
    this->answers = 0;
    this->get(url);
    EXPECT_EQ(this->answers, 0) << "not at once: " << url;
    ASSERT_TRUE(this->isAnswered()) << url;
    EXPECT_FALSE(this->last) << url;
  }
}

REGISTER_TYPED_TEST_SUITE_P(HttpContract, AnAnswerComesOnceAndLater, ARefusalIsAnAnswerToo,
                            ASiteThatKeepsSilentGivesNoAnswerWhenTheTimeIsOver, AnAnswerThatIsTooLongCountsAsNoAnswer,
                            OnlyHttpsAndPlainHttpToThisComputerAreAllowed);

}  // namespace tollvane::test
