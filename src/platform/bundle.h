// The bundle: the directory that the running program came in. Callable from any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

class Bundle {
 public:
  virtual ~Bundle() = default;

  // A text from the bundle's information record; absent if the key is missing or its value is not a text.
  virtual std::optional<std::string> infoString(std::string_view key) const = 0;

  // The texts of a list in the bundle's information record; empty if there is no list. Members that are not texts are
  // left out.
  virtual std::vector<std::string> infoStrings(std::string_view key) const = 0;

  // The path of a program in the bundle; absent if the bundle has none of that name.
  virtual std::optional<std::filesystem::path> auxiliaryExecutable(std::string_view name) const = 0;

  // The path of a file or folder in the bundle that is not a program; absent if the bundle has none of that name.
  virtual std::optional<std::filesystem::path> resource(std::string_view name) const = 0;

  // The path of the program that prints the system's sound messages as JSON lines: the system's own log tool, or the
  // one in the bundle. It need not exist.
  virtual std::filesystem::path logTool() const = 0;
};

}  // namespace tollvane
