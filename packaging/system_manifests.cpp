// Writes the manifests that let browsers start the bridge for every user of a computer:
//
//   system_manifests BUNDLE BRIDGE ROOT
//
// BUNDLE: the bundle that is packaged; BRIDGE: where its bridge will be on the user's computer; ROOT: the folder that
// becomes the root of the file system. They say the same as those that Tollvane writes for its user, except for the
// path of the bridge.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "browser/native_hosts.h"
#include "catalogue/browsers.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/posix/posix_files.h"

int main(int argc, char* argv[]) {
  using namespace tollvane;
  if (argc != 4) {
    std::fputs("usage: system_manifests BUNDLE BRIDGE ROOT\n", stderr);
    return EXIT_FAILURE;
  }
  const ExecutableBundle bundle(argv[1]);
  const std::filesystem::path root(argv[3]);
  PosixFiles files;
  std::set<std::string_view> written;  // several editions look into one folder
  for (const BrowserEdition& edition : browserEditions()) {
    const auto browser = Browser::fromBundleID(edition.bundleID);
    if (!browser || edition.systemManifests.empty() || !written.insert(edition.systemManifests).second) continue;
    const auto folder = root / edition.systemManifests.substr(1);
    const auto file = folder / NativeHosts::manifestFile();
    if (files.createDirectories(folder) && files.write(file, NativeHosts::manifest(*browser, argv[2], bundle)))
      continue;
    std::fprintf(stderr, "system_manifests: %s could not be written.\n", file.c_str());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
