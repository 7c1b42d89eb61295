// A test that shares a session with its whole suite, because bringing one up takes longer than most tests. The first
// test makes the session. Each test begins with an empty home (renew()). After a test that fails, the next one gets a
// new session.
//
//   class AlertsTest : public SharedSession<PrivateDesktop> {
//    protected:
//     AlertsTest() : SharedSession(PrivateDesktop::Options{.panel = false}) {}
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace tollvane::test {

template <typename Session>
class SharedSession : public testing::Test {
 protected:
  template <typename... Arguments>
  explicit SharedSession(Arguments&&... arguments) : session(made(std::forward<Arguments>(arguments)...)) {
    session.renew();
  }
  ~SharedSession() override {
    if (HasFailure() || spoilt_) shared_.reset();
  }

  static void TearDownTestSuite() { shared_.reset(); }

  // The next test gets a new session, as after a failure.
  void spoilSession() { spoilt_ = true; }

  Session& session;

 private:
  template <typename... Arguments>
  static Session& made(Arguments&&... arguments) {
    if (!shared_) shared_ = std::make_unique<Session>(std::forward<Arguments>(arguments)...);
    return *shared_;
  }

  static inline std::unique_ptr<Session> shared_;
  bool spoilt_ = false;
};

}  // namespace tollvane::test
