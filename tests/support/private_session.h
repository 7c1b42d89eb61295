// A private session of a test (tests/session/private_session says what that is): its parts, its environment, and the
// programs that the test starts in it. Everything ends with the object, or with the test should that be killed.
//
// One thread, the one that stays. Constructor and methods throw std::runtime_error, with what the program said, if a
// part does not come up. All waiting polls a condition with a deadline.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/process.h"

namespace tollvane::test {

class PrivateSession {
 public:
  // `options`: as private_session takes them.
  explicit PrivateSession(std::vector<std::string> options);
  ~PrivateSession();
  PrivateSession(const PrivateSession&) = delete;
  PrivateSession& operator=(const PrivateSession&) = delete;

  // "start panel" and the like; returns when it is done.
  void tell(const std::string& command);

  // The environment in which programs find the session. A test may change what its own programs get.
  const Variables& variables() const { return variables_; }
  void setVariable(const std::string& name, const std::string& value) { variables_[name] = value; }

  // As for a test that begins: what programs have left behind ends, the next ones get an empty home and nothing of what
  // setVariable() said before.
  void renew();

  // The home of the programs that the test starts.
  std::filesystem::path home() const { return variables_.at("HOME"); }
  // The home of the session's own programs.
  std::filesystem::path ownHome() const { return facts_.at("home"); }
  // Removed at the end. Sound files and the like may lie here.
  std::filesystem::path root() const { return facts_.at("root"); }
  std::filesystem::path runtimeDirectory() const { return own_.at("XDG_RUNTIME_DIR"); }
  pid_t pid(const std::string& part) const;

  // Starts a program as the user of the session. Its standard error goes nowhere unless TOLLVANE_TEST_VERBOSE is set.
  std::unique_ptr<Process> start(const std::vector<std::string>& command, Process::Input input, Process::Output output,
                                 const Variables& extra = {}) const;

  // Runs a program to its end and returns what it printed; absent when it failed.
  std::optional<std::string> run(const std::vector<std::string>& command) const;

  // The status items that the panel or bar knows, as the watcher lists them: one text, empty when there is none.
  std::string registeredItems() const;

 private:
  void readAnswer();

  std::unique_ptr<Process> session_;
  Variables facts_;
  Variables own_;        // as the session says
  Variables variables_;  // and as the test has them
  int homes_ = 0;
};

}  // namespace tollvane::test
