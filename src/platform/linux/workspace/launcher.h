// Starts other programs, and opens files and pages in the programs that the user prefers for them. Main thread only.
// What is started outlives this program, and does not stay behind as a zombie.
#pragma once

#include <QProcessEnvironment>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/workspace/activation_token.h"
#include "support/liveness.h"

namespace tollvane {

class Launcher {
 public:
  using Done = std::function<void(bool started)>;  // called once, later; not when the launcher ends before

  virtual ~Launcher() = default;

  // Starts the application that this desktop entry describes, with these pages or files.
  virtual void launch(const std::filesystem::path& entry, const std::vector<std::string>& uris, Done done) = 0;

  // Opens a file (an absolute path) or a page (a URI) in the default program.
  virtual void open(const std::string& target, Done done) = 0;
};

// Through the desktop's own tool (gio), which knows all about desktop entries and default programs; where it is missing
// or knows no program, through xdg-open, or by the entry's own command line. Never through a shell. Needs a
// QCoreApplication.
//
// Started programs inherit our environment, minus the variables meant for us, plus the activation token of the user's
// click.
class GioLauncher : public Launcher {
 public:
  explicit GioLauncher(TokenSource tokens) : tokens_(std::move(tokens)) {}

  void launch(const std::filesystem::path& entry, const std::vector<std::string>& uris, Done done) override;
  void open(const std::string& target, Done done) override;

 private:
  struct Attempt {
    enum Kind {
      answers,  // ends at once, and its exit code tells whether it could do it
      stays,    // may be the very program, or wait for it
    };
    std::vector<std::string> command;
    Kind kind;
  };

  // Tries the commands one after the other until one of them succeeds.
  void runFirst(std::vector<Attempt> attempts, const QProcessEnvironment& environment, Done done);
  static void run(const Attempt& attempt, const QProcessEnvironment& environment, Done done);
  QProcessEnvironment environment() const;

  TokenSource tokens_;
  Liveness alive_;
};

}  // namespace tollvane
