#include "platform/linux/session/autostart_login.h"

#include <glib.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tollvane {
namespace {

constexpr std::size_t largestEntry = 64 << 10;

// An argument as the Exec key wants it: in double quotes, with the characters escaped that are special there or in the
// file.
std::string execArgument(std::string_view path) {
  std::string text = "\"";
  for (const char c : path) {
    if (c == '\\') {
      text += "\\\\\\\\";
    } else if (c == '"' || c == '`' || c == '$') {
      text += std::string("\\\\") + c;
    } else if (c == '%') {
      text += "%%";
    } else {
      text += c;
    }
  }
  return text + '"';
}

std::string entryFor(const std::filesystem::path& program) {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Tollvane\n"
         "Comment=Tells which application or browser tab made each sound\n"
         "Exec=env " +
         std::string(startedAtLogin) + "=1 " + execArgument(program.native()) +
         "\n"
         "X-GNOME-Autostart-enabled=true\n";
}

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

AutostartLogin::AutostartLogin(Files& files, std::optional<std::filesystem::path> configuration,
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

std::optional<std::string> AutostartLogin::registerApplication() {
  if (!entry_) return "There is no home directory for this user.";
  // If the user turned the entry off in the desktop's own settings, it must be turned on there as well.
  if (status() == LoginStatus::requiresApproval) return std::nullopt;
  if (!files_.createDirectories(entry_->parent_path()))
    return "The folder " + entry_->parent_path().string() + " could not be made.";
  if (!files_.writeAtomically(*entry_, entryFor(program_)))
    return "The file " + entry_->string() + " could not be written.";
  return std::nullopt;
}

std::optional<std::string> AutostartLogin::unregisterApplication() {
  if (!entry_ || !files_.exists(*entry_) || files_.remove(*entry_)) return std::nullopt;
  return "The file " + entry_->string() + " could not be removed.";
}

}  // namespace tollvane
