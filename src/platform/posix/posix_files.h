// Files through the kernel's own calls: modes are set as things are made, never afterwards.
#pragma once

#include "platform/files.h"

namespace tollvane {

class PosixFiles : public Files {
 public:
  bool exists(const std::filesystem::path& path) const override;
  bool createDirectories(const std::filesystem::path& directory) override;
  Append append(const std::filesystem::path& file, std::string_view bytes) override;

  // The old content is replaced only once the new one is on the disk. A symbolic link is followed, not replaced.
  bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) override;
  bool write(const std::filesystem::path& file, std::string_view bytes) override;
  std::optional<std::string> read(const std::filesystem::path& file, std::size_t most) const override;
  std::optional<std::vector<std::string>> list(const std::filesystem::path& directory) const override;
  bool contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const override;
  bool copy(const std::filesystem::path& from, const std::filesystem::path& to) override;
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  bool remove(const std::filesystem::path& file) override;
};

}  // namespace tollvane
