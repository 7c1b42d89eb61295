// Which application a program belongs to on macOS. Pure; any thread.
#pragma once

#include <filesystem>

namespace tollvane::bridge {

// The application that the program at this path is a part of: the outermost folder that ends in ".app", because
// browsers keep their helpers as applications inside their own. Empty if the program is a part of no application.
inline std::filesystem::path applicationBundle(const std::filesystem::path& program) {
  std::filesystem::path folder;
  for (const auto& step : program) {
    folder /= step;
    if (step.extension() == ".app" && folder != program) return folder;
  }
  return {};
}

}  // namespace tollvane::bridge
