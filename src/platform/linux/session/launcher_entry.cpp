#include "platform/linux/session/launcher_entry.h"

#include <string>

#include "platform/linux/session/exec_key.h"

namespace tollvane {
namespace {

constexpr std::size_t largestLauncherEntry = 64 << 10;
constexpr std::string_view mark = "\nX-Tollvane-Bundle=";

std::string launcherEntry(const std::filesystem::path& bundle) {
  const std::string command = execCommand(bundle / "Tollvane");
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Tollvane\n"
         "Comment=Tells which application or browser tab made each sound\n"
         "Exec=" +
         command + "\nIcon=" + keyFileText((bundle / "Extensions/chromium/icons/bell.svg").native()) +
         "\nCategories=AudioVideo;Audio;\n"
         "StartupNotify=true\n"
         "SingleMainWindow=true\n"
         "Actions=show-recent-sounds;" +
         std::string(mark) + keyFileText(bundle.native()) +
         "\n\n[Desktop Action show-recent-sounds]\n"
         "Name=Show Recent Sounds\n"
         "Exec=" +
         command + " --show-menu\n";
}

// The line's rest after the mark.
std::string_view bundleOf(std::string_view entry) {
  const auto at = entry.find(mark);
  if (at == entry.npos) return {};
  entry.remove_prefix(at + mark.size());
  return entry.substr(0, entry.find('\n'));
}

}  // namespace

bool isOwnLauncherEntry(const PosixFiles& files, const std::filesystem::path& file) {
  const auto text = files.read(file, largestLauncherEntry);
  return text && !bundleOf(*text).empty();
}

void writeLauncherEntry(PosixFiles& files, const std::filesystem::path& data,
                        const std::vector<std::filesystem::path>& others, const std::filesystem::path& bundle) {
  for (const auto& folder : others)
    if (folder != data && files.exists(folder / launcherEntryPath)) return;
  const auto file = data / launcherEntryPath;
  if (files.exists(file)) {
    const auto text = files.read(file, largestLauncherEntry);
    const std::string_view old = text ? bundleOf(*text) : std::string_view();
    // Another bundle that is still there keeps its entry.
    if (old.empty() || (old != keyFileText(bundle.native()) && files.exists(std::string(old)))) return;
    if (*text == launcherEntry(bundle)) return;
  }
  if (files.createDirectories(file.parent_path())) files.writeAtomically(file, launcherEntry(bundle));
}

}  // namespace tollvane
