#include "platform/linux/session/autostart_login.h"

#include <glib.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/linux/session/exec_key.h"

namespace tollvane {
namespace {

constexpr std::size_t largestEntry = 64 << 10;

std::string loginCommandFor(const std::filesystem::path& program) {
  return "env " + std::string(startedAtLogin) + "=1 " + execCommand(program);
}

std::string entryFor(const std::filesystem::path& program) {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Tollvane\n"
         "Comment=Tells which application or browser tab made each sound\n"
         "Exec=" +
         loginCommandFor(program) +
         "\n"
         "X-GNOME-Autostart-enabled=true\n";
}

// The kernel's reason why the last call has failed.
std::string why() { return std::generic_category().message(errno) + "."; }

class AutostartEntry {
 public:
  explicit AutostartEntry(const std::string& text) : file_(g_key_file_new(), g_key_file_free) {
    g_key_file_load_from_data(file_.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
  }

  std::string command() const {
    const std::unique_ptr<gchar, decltype(&g_free)> text(
        g_key_file_get_string(file_.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr), g_free);
    return text ? text.get() : "";
  }

  // The program that the entry starts; absent if the entry is not one of ours.
  std::optional<std::string> program() const {
    const std::string text = command();
    if (text.find(std::string(startedAtLogin) + "=1 ") == std::string::npos) return std::nullopt;
    gint count = 0;
    gchar** words = nullptr;
    if (!g_shell_parse_argv(text.c_str(), &count, &words, nullptr)) return std::nullopt;
    std::string last = words[count - 1];
    g_strfreev(words);
    for (auto at = last.find("%%"); at != std::string::npos; at = last.find("%%", at + 1)) last.erase(at, 1);
    return last;
  }

  // Whether the user does not want this entry. Desktops and their settings have several keys for that.
  bool isTurnedOff() const {
    return says(G_KEY_FILE_DESKTOP_KEY_HIDDEN, true) || says("X-GNOME-Autostart-enabled", false) ||
           says("X-MATE-Autostart-enabled", false) || says("X-KDE-autostart-enabled", false) ||
           says("X-XFCE-Autostart-enabled", false);
  }

 private:
  // False, too, if the key is missing or its value is not a truth value.
  bool says(const char* key, bool wanted) const {
    GError* error = nullptr;
    const bool value = g_key_file_get_boolean(file_.get(), G_KEY_FILE_DESKTOP_GROUP, key, &error) != FALSE;
    const bool isSaid = error == nullptr;
    g_clear_error(&error);
    return isSaid && value == wanted;
  }

  std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> file_;
};

}  // namespace

AutostartLogin::AutostartLogin(PosixFiles& files, std::optional<std::filesystem::path> configuration,
                               std::filesystem::path program)
    : files_(files), program_(std::move(program)) {
  if (configuration) entry_ = *configuration / "autostart" / "tollvane.desktop";
}

LoginStatus AutostartLogin::status() const {
  const auto text = entry_ ? files_.read(*entry_, largestEntry) : std::nullopt;
  if (!text) return LoginStatus::notRegistered;
  const AutostartEntry entry(*text);
  if (entry.isTurnedOff()) return LoginStatus::requiresApproval;
  const bool ours = entry.command() == AutostartEntry(entryFor(program_)).command();
  return ours ? LoginStatus::enabled : LoginStatus::notRegistered;
}

std::optional<std::string> AutostartLogin::registerApplication(AskedBy by) {
  if (!entry_) return "There is no home directory for this user.";
  // What the user turned off in the desktop's own settings stays off until the user turns it on.
  if (by == AskedBy::program && status() == LoginStatus::requiresApproval) return std::nullopt;
  return write();
}

std::optional<std::string> AutostartLogin::write() {
  if (!files_.createDirectories(entry_->parent_path()))
    return "The folder " + entry_->parent_path().string() + " could not be made: " + why();
  if (!files_.writeAtomically(*entry_, entryFor(program_)))
    return "The file " + entry_->string() + " could not be written: " + why();
  return std::nullopt;
}

std::optional<std::string> AutostartLogin::unregisterApplication() {
  if (!entry_ || !files_.exists(*entry_) || files_.remove(*entry_)) return std::nullopt;
  return "The file " + entry_->string() + " could not be removed: " + why();
}

void AutostartLogin::repair() {
  const auto text = entry_ ? files_.read(*entry_, largestEntry) : std::nullopt;
  if (!text) return;
  const AutostartEntry entry(*text);
  const auto program = entry.program();
  if (program && !entry.isTurnedOff() && !files_.exists(*program)) write();
}

}  // namespace tollvane
