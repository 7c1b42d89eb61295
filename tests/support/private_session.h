// A private session for a test (tests/session/private_session says what that is): its parts, its environment, and the
// programs that the test starts in it. Everything ends with the object, or with the test if that is killed.
//
// Use it from one thread, which must outlive it. Constructor and methods throw std::runtime_error, with what the
// program said, if a part does not come up. All waiting polls a condition, with a deadline.
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
  // `options`: the command-line options of private_session.
  explicit PrivateSession(std::vector<std::string> options);
  ~PrivateSession();
  PrivateSession(const PrivateSession&) = delete;
  PrivateSession& operator=(const PrivateSession&) = delete;

  // Sends a command of private_session, such as "start panel"; returns when it is done.
  void tell(const std::string& command);

  // The environment that lets programs find the session. setVariable() changes it for the programs that the test
  // starts.
  const Variables& variables() const { return variables_; }
  void setVariable(const std::string& name, const std::string& value) { variables_[name] = value; }

  // Prepares the session for the next test: ends processes that programs have left behind, gives the next programs an
  // empty home, and undoes setVariable().
  void renew();

  // The home of the programs that the test starts.
  std::filesystem::path home() const { return variables_.at("HOME"); }
  // The home of the session's own programs.
  std::filesystem::path ownHome() const { return facts_.at("home"); }
  // A folder for sound files and the like. It is removed at the end.
  std::filesystem::path root() const { return facts_.at("root"); }
  std::filesystem::path runtimeDirectory() const { return own_.at("XDG_RUNTIME_DIR"); }
  pid_t pid(const std::string& part) const;

  // Starts a program as the user of the session. Its standard error is dropped unless TOLLVANE_TEST_VERBOSE is set.
  std::unique_ptr<Process> start(const std::vector<std::string>& command, Process::Input input, Process::Output output,
                                 const Variables& extra = {}) const;

  // Runs a program to its end and returns what it printed; absent if it failed.
  std::optional<std::string> run(const std::vector<std::string>& command) const;

  // The status items that the panel or bar knows, as the watcher lists them; empty if it knows no item.
  std::string registeredItems() const;

 private:
  void readAnswer();

  std::unique_ptr<Process> session_;
  Variables facts_;
  Variables own_;        // as the session set them
  Variables variables_;  // as the test changed them
  int homes_ = 0;
};

}  // namespace tollvane::test
