#include "platform/linux/system/autostart_login.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/desktop/start_mark.h"

namespace tollvane {
namespace {

constexpr std::size_t largestEntry = 64 << 10;

// An argument in the words of the Exec key: in double quotes, and what is special there or in the file escaped.
std::string execArgument(std::string_view path) {
  std::string text = "\"";
  for (const char c : path) {
    if (c == '\\')
      text += "\\\\\\\\";
    else if (c == '"' || c == '`' || c == '$')
      text += std::string("\\\\") + c;
    else if (c == '%')
      text += "%%";
    else
      text += c;
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

std::string_view trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(" \t\r");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// The value of a key in the entry's own group.
std::string_view valueOf(std::string_view entry, std::string_view key) {
  bool inGroup = false;
  while (!entry.empty()) {
    const auto end = std::min(entry.find('\n'), entry.size());
    const std::string_view line = trimmed(entry.substr(0, end));
    entry.remove_prefix(std::min(end + 1, entry.size()));
    if (line.starts_with('[')) inGroup = line == "[Desktop Entry]";
    const auto equals = line.find('=');
    if (inGroup && equals != std::string_view::npos && trimmed(line.substr(0, equals)) == key)
      return trimmed(line.substr(equals + 1));
  }
  return {};
}

// How desktops and their settings say that the user does not want this entry.
bool isTurnedOff(std::string_view entry) {
  return valueOf(entry, "Hidden") == "true" || valueOf(entry, "X-GNOME-Autostart-enabled") == "false" ||
         valueOf(entry, "X-MATE-Autostart-enabled") == "false" ||
         valueOf(entry, "X-KDE-autostart-enabled") == "false" || valueOf(entry, "X-XFCE-Autostart-enabled") == "false";
}

}  // namespace

AutostartLogin::AutostartLogin(Files& files, std::optional<std::filesystem::path> configuration,
                               std::filesystem::path program)
    : files_(files), program_(std::move(program)) {
  if (configuration) entry_ = *configuration / "autostart" / "tollvane.desktop";
}

LoginStatus AutostartLogin::status() const {
  const auto entry = entry_ ? files_.read(*entry_, largestEntry) : std::nullopt;
  if (!entry) return LoginStatus::notRegistered;
  if (isTurnedOff(*entry)) return LoginStatus::requiresApproval;
  const bool ours = valueOf(*entry, "Exec") == valueOf(entryFor(program_), "Exec");
  return ours ? LoginStatus::enabled : LoginStatus::notRegistered;
}

std::optional<std::string> AutostartLogin::registerApplication() {
  if (!entry_) return "There is no home directory for this user.";
  // What the user turned off in the desktop's own settings is turned on there as well.
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
