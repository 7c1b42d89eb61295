// Starts programs through the desktop's own tool (gio), which knows all about desktop entries and default programs;
// where it is missing or knows no program, through xdg-open, or by the entry's own command line. Main thread only;
// needs a QCoreApplication.
//
// Never a shell. What is started has this program's own environment, without what only concerns this program, and with
// the permission to come forward that the user's click gave.
#pragma once

#include <QProcessEnvironment>

#include "platform/linux/desktop/launcher.h"
#include "platform/linux/desktop/tokens.h"
#include "support/liveness.h"

namespace tollvane {

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
