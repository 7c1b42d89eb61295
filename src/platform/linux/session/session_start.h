// How this start came about, and what the toolkit must know before it draws anything. Main thread only.
#pragma once

#include <string>
#include <vector>

namespace tollvane {

// Whether there is a desktop session to show anything in.
bool hasDesktop();

// Tells the toolkit how to draw, unless the user has told it already. To be made before the application object, and to
// be destroyed before other programs are started, because it is not for them.
class DisplayChoice {
 public:
  DisplayChoice();
  ~DisplayChoice();
  DisplayChoice(const DisplayChoice&) = delete;
  DisplayChoice& operator=(const DisplayChoice&) = delete;

 private:
  void choose(const char* name, const char* value);

  std::vector<const char*> chosen_;
};

// What the desktop says about this start. It is removed from the environment, because it does not concern other
// programs.
class StartNotice {
 public:
  StartNotice();

  bool atLogin() const { return atLogin_; }            // whether the session started the program, and not a person
  const std::string& token() const { return token_; }  // see workspace/activation_token.h

 private:
  bool atLogin_;
  std::string token_;
};

}  // namespace tollvane
