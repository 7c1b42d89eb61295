// Reads arbitrary bytes as the file of stored settings, and changes one setting in it. What was stored before must be
// kept: as members beside the new one, or, if the file was no JSON object, as a file of its own.

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "fuzz/fuzz.h"
#include "platform/linux/system/json_defaults.h"
#include "platform/posix/posix_files.h"
#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

namespace fs = std::filesystem;

// Waiting for the disk would take most of the time.
class HastyFiles : public PosixFiles {
 public:
  bool writeAtomically(const fs::path& file, std::string_view bytes) override { return write(file, bytes); }
};

class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "defaults-fuzz-XXXXXX").string();
    FUZZ_REQUIRE(::mkdtemp(name.data()) != nullptr);
    path_ = name;
  }
  ~Folder() {
    std::error_code error;
    fs::remove_all(path_, error);
  }
  fs::path file(const char* name) const { return path_ / name; }

 private:
  fs::path path_;
};

void check(std::string_view input) {
  static const Folder folder;
  const fs::path path = folder.file("settings.json"), corrupt = folder.file("settings.json.corrupt");
  HastyFiles files;
  FUZZ_REQUIRE(files.write(path, input));
  const auto before = json::object(input);

  for (const auto* key : {"markTabs", "lastCheck", ""}) JsonDefaults(files, path).object(key);
  FUZZ_REQUIRE(before ? files.read(path, input.size()) == input : files.read(corrupt, input.size()) == input);

  JsonDefaults(files, path).set("markTabs", true);
  const auto stored = JsonDefaults(files, path).object("markTabs");
  FUZZ_REQUIRE(stored && std::holds_alternative<bool>(*stored) && std::get<bool>(*stored));
  auto expected = before ? *before : nlohmann::json::object();
  expected["markTabs"] = true;
  const auto after = json::object(files.read(path, 1 << 24).value_or(""));
  FUZZ_REQUIRE(after && *after == expected);
  files.remove(corrupt);
}

}  // namespace
}  // namespace tollvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tollvane::check({reinterpret_cast<const char*>(data), size});
  return 0;
}
