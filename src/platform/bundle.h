// The directory that the running program came in. Callable from any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane {

class Bundle {
 public:
  virtual ~Bundle() = default;

  // A text from the bundle's information record; absent when the key is missing or its value is not a text.
  virtual std::optional<std::string> infoString(std::string_view key) const = 0;

  // The program that prints the system's sound messages as JSON lines: the system's own log tool, or the one in the
  // bundle. It need not exist.
  virtual std::filesystem::path logTool() const = 0;
};

}  // namespace tollvane
