// A temporary directory, removed with the object.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tollvane::test {

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "tollvane-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  void write(std::string_view name, std::string_view content) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << content;
  }
  std::string read(std::string_view name) const {
    std::ostringstream content;
    content << std::ifstream(path_ / name, std::ios::binary).rdbuf();
    return content.str();
  }

 private:
  std::filesystem::path path_;
};

inline std::filesystem::perms modeOf(const std::filesystem::path& path) {
  return std::filesystem::status(path).permissions() & std::filesystem::perms::mask;
}

}  // namespace tollvane::test
