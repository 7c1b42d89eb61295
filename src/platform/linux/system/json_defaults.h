// The user's defaults as one small JSON object in a file. The file is read once; every set() replaces it on the disk
// before it returns. A file that is not a JSON object is renamed to FILE.corrupt, never silently emptied. Members that
// Tollvane does not know are kept. Main thread only.
#pragma once

#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "platform/defaults.h"
#include "platform/files.h"

namespace tollvane {

class JsonDefaults : public Defaults {
 public:
  // Without `file`, everything is kept for this run only.
  JsonDefaults(Files& files, std::optional<std::filesystem::path> file);
  ~JsonDefaults() override;

  std::optional<Value> object(std::string_view key) const override;
  void set(std::string_view key, bool value) override;
  void set(std::string_view key, double value) override;

 private:
  void store();

  Files& files_;
  std::optional<std::filesystem::path> file_;
  std::unique_ptr<nlohmann::json> values_;
};

}  // namespace tollvane
