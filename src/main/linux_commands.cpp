#include "main/linux_commands.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "app/uninstall.h"
#include "browser/native_hosts.h"
#include "doctor/diagnosis.h"
#include "platform/linux/bell/shell_extension.h"
#include "platform/linux/doctor/examiner.h"
#include "platform/linux/kernel/folders.h"
#include "platform/linux/session/autostart_login.h"
#include "platform/linux/session/launcher_entry.h"
#include "platform/linux/session/single_instance.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/posix/posix_files.h"

namespace tollvane {
namespace {

constexpr const char* usage =
    "Usage: Tollvane [OPTION]\n"
    "\n"
    "Without an option, starts Tollvane, or brings the settings of the one that runs forward.\n"
    "\n"
    "  --show-menu         open the menu of recent sounds\n"
    "  --doctor            say what works on this computer, and what to do about the rest\n"
    "  --doctor --json     the same as JSON, for reports of errors\n"
    "  --doctor --open     the same in the text editor\n"
    "  --uninstall         remove what Tollvane has written for this user, but not history and settings\n"
    "  --uninstall --all   remove history and settings, too\n"
    "  --help, --version   print this, or the version, and end\n";

void print(const std::string& text) { std::fputs(text.c_str(), stdout); }

int fail(const std::string& sentence) {
  std::fprintf(stderr, "Tollvane: %s\n", sentence.c_str());
  return EXIT_FAILURE;
}

std::string versionOf(const Bundle& bundle) { return bundle.infoString("CFBundleShortVersionString").value_or("dev"); }

int openInEditor(QCoreApplication& application, const std::string& text) {
  PosixFiles files;
  const auto folder = dataFolder();
  if (!folder) return fail("there is no home directory for this user.");
  const auto file = *folder / supportDirectoryName / doctorFileName;
  if (!files.createDirectories(file.parent_path()) || !files.writeAtomically(file, text))
    return fail(file.string() + " cannot be written.");
  bool opened = false;
  GioLauncher launcher([] { return std::string(); });
  launcher.open(file, [&](bool started) {
    opened = started;
    QCoreApplication::quit();
  });
  application.exec();
  return opened ? EXIT_SUCCESS : fail("no program opens " + file.string() + ".");
}

int doctor(QCoreApplication& application, const std::filesystem::path& directory, bool asJsonText, bool inEditor) {
  const ExecutableBundle bundle(directory);
  const WantedManifests wanted{NativeHosts::manifestFile(),
                               NativeHosts::chromiumOrigins(bundle),
                               {NativeHosts::geckoExtensionIDs.begin(), NativeHosts::geckoExtensionIDs.end()}};
  const auto findings = diagnose(examine(directory, wanted, QDBusConnection::sessionBus()), bundle);
  if (inEditor) return openInEditor(application, asText(findings, versionOf(bundle)));
  print((asJsonText ? asJson : asText)(findings, versionOf(bundle)));
  return isHealthy(findings) ? EXIT_SUCCESS : EXIT_FAILURE;
}

int removeTraces(const std::filesystem::path& directory, bool all) {
  if (!dataFolder()) return fail("there is no home directory for this user.");
  const QDBusConnection bus = QDBusConnection::sessionBus();
  const auto first = FirstInstance::find(bus);
  if (first && !first->end(bus)) return fail("Tollvane runs and cannot be ended. Quit it first.");
  PosixFiles files;
  const XdgLocations locations;
  const auto configuration = configurationFolder();
  AutostartLogin login(files, configuration, directory / "Tollvane");
  const auto settings = configuration ? std::optional(*configuration / "Tollvane") : std::nullopt;
  std::vector<std::filesystem::path> others = {*dataFolder() / "gnome-shell/extensions" / ShellExtension::uuid};
  const auto entry = *dataFolder() / launcherEntryPath;
  if (isOwnLauncherEntry(files, entry)) others.push_back(entry);
  const Uninstalled result = uninstall(files, locations, login, settings, all, others);
  for (const auto& path : result.removed) print("removed " + path.string() + "\n");
  for (const auto& path : result.left) fail(path.string() + " cannot be removed.");
  if (result.loginFailure) fail(*result.loginFailure);
  if (!result.left.empty() || result.loginFailure) return EXIT_FAILURE;
  print(all ? "Nothing of Tollvane is left in your home.\n"
            : "Tollvane does not start at login any more, and no browser starts its bridge. History and settings are "
              "still there.\n");
  return EXIT_SUCCESS;
}

}  // namespace

std::optional<int> runCommand(int argc, char* argv[], const std::filesystem::path& bundle) {
  const std::set<std::string_view> words(argv + std::min(argc, 1), argv + argc);
  const auto are = [&](const std::set<std::string_view>& wanted) { return words == wanted; };
  if (are({"--help"})) {
    print(usage);
    return EXIT_SUCCESS;
  }
  if (are({"--version"})) {
    print("Tollvane " + versionOf(ExecutableBundle(bundle)) + "\n");
    return EXIT_SUCCESS;
  }
  const bool isDoctor = are({"--doctor"}) || are({"--doctor", "--json"}) || are({"--doctor", "--open"});
  const bool isUninstall = are({"--uninstall"}) || are({"--uninstall", "--all"});
  if (!isDoctor && !isUninstall) {
    for (const std::string_view command : {"--doctor", "--uninstall", "--help", "--version"})
      if (words.contains(command)) return fail("these options do not go together; --help lists them.");
    return std::nullopt;
  }
  QCoreApplication application(argc, argv);
  if (isUninstall) return removeTraces(bundle, words.contains("--all"));
  return doctor(application, bundle, words.contains("--json"), words.contains("--open"));
}

}  // namespace tollvane
