// Starts other programs, and opens files and pages in the programs that the user prefers for them. Main thread only.
// What is started outlives this program, and is nobody's zombie.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

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

}  // namespace tollvane
