#include "tests/support/private_session.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

// private_session has a deadline for each part. These deadlines are for the case that private_session itself hangs.
constexpr std::chrono::milliseconds answerPatience = 180s;
constexpr std::chrono::milliseconds endPatience = 30s;
constexpr std::chrono::milliseconds programPatience = 20s;

bool isVariable(std::string_view name) { return name.find_first_of("abcdefghijklmnopqrstuvwxyz") == name.npos; }

std::vector<std::string> joined(std::string first, std::vector<std::string> rest) {
  rest.insert(rest.begin(), std::move(first));
  return rest;
}

}  // namespace

PrivateSession::PrivateSession(std::vector<std::string> options)
    : session_(std::make_unique<Process>(joined(PRIVATE_SESSION, std::move(options)),
                                         Process::Options{.input = Process::Input::written,
                                                          .output = Process::Output::read,
                                                          .variables = std::nullopt,
                                                          .errors = std::nullopt})) {
  readAnswer();
}

PrivateSession::~PrivateSession() {
  session_->closeInput();
  session_->exitCode(endPatience);
}

void PrivateSession::tell(const std::string& command) {
  session_->writeLine(command);
  readAnswer();
}

void PrivateSession::readAnswer() {
  constexpr std::string_view failed = "failed: ";
  while (const auto line = session_->line(answerPatience)) {
    if (*line == "ready") return;
    if (line->starts_with(failed)) throw std::runtime_error("the private session: " + line->substr(failed.size()));
    const std::size_t equals = line->find('=');
    if (equals == std::string::npos) throw std::runtime_error("the private session said: " + *line);
    const std::string name = line->substr(0, equals), value = line->substr(equals + 1);
    if (isVariable(name)) {
      own_[name] = variables_[name] = value;
    } else {
      facts_[name] = value;
    }
  }
  throw std::runtime_error("the private session has ended");
}

void PrivateSession::renew() {
  tell("clear");
  const std::filesystem::path home = root() / ("home-" + std::to_string(++homes_));
  std::filesystem::create_directory(home);
  struct stat owner {};
  if (::stat(root().c_str(), &owner) != 0 || ::chown(home.c_str(), owner.st_uid, owner.st_gid) != 0)
    throw std::runtime_error("no home for a test: " + home.string());
  variables_ = own_;
  variables_["HOME"] = home.string();
}

pid_t PrivateSession::pid(const std::string& part) const {
  return static_cast<pid_t>(std::stol(facts_.at(part + "_pid")));
}

std::unique_ptr<Process> PrivateSession::start(const std::vector<std::string>& command, Process::Input input,
                                               Process::Output output, const Variables& extra) const {
  std::vector<std::string> words;
  if (const auto user = facts_.find("user"); user != facts_.end()) {
    const std::size_t colon = user->second.find(':');
    words = {"setpriv",
             "--reuid",
             user->second.substr(0, colon),
             "--regid",
             user->second.substr(colon + 1),
             "--clear-groups",
             "--pdeathsig",
             "KILL"};
  }
  words.insert(words.end(), command.begin(), command.end());
  Variables variables = extra;
  variables.merge(Variables(variables_));
  const bool verbose = std::getenv("TOLLVANE_TEST_VERBOSE") != nullptr;
  return std::make_unique<Process>(
      words, Process::Options{.input = input,
                              .output = output,
                              .variables = variables,
                              .errors = verbose ? std::nullopt : std::optional<std::filesystem::path>("/dev/null")});
}

std::optional<std::string> PrivateSession::run(const std::vector<std::string>& command) const {
  const auto program = start(command, Process::Input::written, Process::Output::read);
  program->closeInput();
  std::string printed = program->rest(programPatience);
  return program->exitCode(programPatience) == 0 ? std::optional(printed) : std::nullopt;
}

std::string PrivateSession::registeredItems() const {
  const auto items = run({"busctl", "--user", "get-property", "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                          "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"});
  return items && items->find('"') != std::string::npos ? *items : std::string();
}

}  // namespace tollvane::test
