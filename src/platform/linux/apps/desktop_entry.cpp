#include "platform/linux/apps/desktop_entry.h"

#include <glib.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/linux/kernel/folders.h"
#include "platform/linux/kernel/program_line.h"
#include "platform/posix/posix_files.h"
#include "support/ascii.h"

namespace tollvane {

namespace {

// The longest real entries, with a hundred translations, have about 60 KB.
constexpr std::size_t longestEntry = 1024 * 1024;
constexpr const char* entryGroup = G_KEY_FILE_DESKTOP_GROUP;

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
struct FreeText {
  void operator()(gchar* text) const { g_free(text); }
};
struct FreeTexts {
  void operator()(gchar** texts) const { g_strfreev(texts); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;
using Text = std::unique_ptr<gchar, FreeText>;
using Texts = std::unique_ptr<gchar*, FreeTexts>;

std::string string(GKeyFile* file, const char* key) {
  const Text text(g_key_file_get_string(file, entryGroup, key, nullptr));
  return text ? std::string(text.get()) : std::string();
}

bool boolean(GKeyFile* file, const char* key) {
  return g_key_file_get_boolean(file, entryGroup, key, nullptr) != FALSE;
}

std::vector<std::string> list(GKeyFile* file, const char* key) {
  const Texts texts(g_key_file_get_string_list(file, entryGroup, key, nullptr, nullptr));
  std::vector<std::string> result;
  for (gchar** text = texts.get(); text != nullptr && *text != nullptr; ++text) result.emplace_back(*text);
  return result;
}

bool contains(const std::vector<std::string>& list, std::string_view text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

bool shownOn(std::string_view desktops, GKeyFile* file) {
  const auto only = list(file, G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN);
  const auto never = list(file, G_KEY_FILE_DESKTOP_KEY_NOT_SHOW_IN);
  // The first of the current desktop's names that is in one of the lists decides.
  while (!desktops.empty()) {
    const std::string_view desktop = ascii::takePart(desktops, ':');
    if (contains(only, desktop)) return true;
    if (contains(never, desktop)) return false;
  }
  return only.empty();
}

// Only the first group is needed; the others (a browser's actions in a hundred languages) are most of the text.
void keepFirstGroup(std::string& text) {
  const auto header = text.find("[Desktop Entry]");
  if (header == std::string::npos) return;
  const auto next = text.find("\n[", header);
  if (next != std::string::npos) text.resize(next + 1);
}

// "%U" is dropped, and so is "--name=%c", because nothing can be compared with it; "100%%" becomes "100%".
std::optional<std::string> withoutFieldCodes(std::string_view argument) {
  std::string result;
  for (std::size_t i = 0; i < argument.size(); ++i) {
    if (argument[i] != '%') {
      result += argument[i];
    } else if (i + 1 < argument.size() && argument[i + 1] == '%') {
      result += argument[++i];
    } else {
      return std::nullopt;
    }
  }
  return result;
}

std::vector<std::string> commandLine(const std::string& exec) {
  std::vector<std::string> command;
  gchar** parsed = nullptr;
  if (exec.empty() || !g_shell_parse_argv(exec.c_str(), nullptr, &parsed, nullptr)) return command;
  const Texts arguments(parsed);
  for (gchar** argument = arguments.get(); *argument != nullptr; ++argument) {
    if (auto plain = withoutFieldCodes(*argument)) command.push_back(std::move(*plain));
  }
  // Flatpak puts these around the field code of file names.
  std::erase_if(command, [](const std::string& argument) { return argument == "@@" || argument == "@@u"; });
  return withoutPrefixes(std::move(command));
}

std::string realPathOf(const std::string& path) { return path.empty() ? path : realPath(path).value_or(std::string()); }

bool saysNothing(std::string_view path) { return isInterpreter(path) || isLauncher(path); }

}  // namespace

bool DesktopEntry::isInterpretersOwn() const { return command.size() == 1 && isInterpreter(command.front()); }

std::string sanitized(std::string_view text) {
  const auto length = static_cast<gssize>(text.size());
  if (g_utf8_validate(text.data(), length, nullptr)) return std::string(text);
  const Text valid(g_utf8_make_valid(text.data(), length));
  return std::string(valid.get());
}

std::optional<DesktopEntry> parseDesktopEntry(std::string text, std::string_view currentDesktop) {
  keepFirstGroup(text);
  text = sanitized(text);
  const KeyFile owner(g_key_file_new());
  GKeyFile* file = owner.get();
  // Without KEEP_TRANSLATIONS, GLib keeps only the user's languages.
  if (!g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr)) return std::nullopt;

  DesktopEntry entry;
  entry.hidden = boolean(file, G_KEY_FILE_DESKTOP_KEY_HIDDEN);
  const std::string type = string(file, G_KEY_FILE_DESKTOP_KEY_TYPE);
  // A user's entry that only hides one of the system often leaves everything else out.
  if (type != G_KEY_FILE_DESKTOP_TYPE_APPLICATION && !(type.empty() && entry.hidden)) return std::nullopt;
  const Text name(g_key_file_get_locale_string(file, entryGroup, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
  if (name) entry.name = name.get();
  entry.command = commandLine(string(file, G_KEY_FILE_DESKTOP_KEY_EXEC));
  entry.tryExec = string(file, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
  const Text icon(g_key_file_get_locale_string(file, entryGroup, G_KEY_FILE_DESKTOP_KEY_ICON, nullptr, nullptr));
  if (icon) entry.icon = icon.get();
  entry.startupWmClass = string(file, G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS);
  entry.flatpakId = string(file, "X-Flatpak");
  entry.snapInstance = string(file, "X-SnapInstanceName");
  entry.noDisplay = boolean(file, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY);
  entry.terminal = boolean(file, G_KEY_FILE_DESKTOP_KEY_TERMINAL);
  entry.dbusActivatable = boolean(file, G_KEY_FILE_DESKTOP_KEY_DBUS_ACTIVATABLE);
  entry.singleMainWindow = boolean(file, "SingleMainWindow") || boolean(file, "X-GNOME-SingleWindow");
  entry.shownHere = shownOn(currentDesktop, file);
  const auto categories = list(file, G_KEY_FILE_DESKTOP_KEY_CATEGORIES);
  entry.isTerminalEmulator = contains(categories, "TerminalEmulator");
  entry.isFileManager = contains(categories, "FileManager");
  entry.isWebBrowser = contains(categories, "WebBrowser");
  return entry;
}

std::optional<DesktopEntry> readDesktopEntry(const std::string& path, std::string_view currentDesktop) {
  auto text = readPlainFile(path, longestEntry);
  if (!text) return std::nullopt;
  auto entry = parseDesktopEntry(std::move(*text), currentDesktop);
  if (entry) entry->path = path;
  return entry;
}

std::optional<DesktopEntry> parseBusService(std::string_view text) {
  constexpr const char* group = "D-BUS Service";
  const std::string valid = sanitized(text);
  const KeyFile file(g_key_file_new());
  if (!g_key_file_load_from_data(file.get(), valid.data(), valid.size(), G_KEY_FILE_NONE, nullptr)) return std::nullopt;
  const auto value = [&](const char* key) {
    const Text found(g_key_file_get_string(file.get(), group, key, nullptr));
    return found ? std::string(found.get()) : std::string();
  };
  DesktopEntry entry;
  entry.name = value("Name");
  entry.command = commandLine(value("Exec"));
  entry.unit = value("SystemdService");
  entry.noDisplay = true;
  if (entry.name.empty()) return std::nullopt;
  return entry;
}

std::optional<DesktopEntry> readBusService(const std::string& path) {
  const auto text = readPlainFile(path, longestEntry);
  auto entry = text ? parseBusService(*text) : std::nullopt;
  if (entry) entry->path = path;
  return entry;
}

void findPrograms(DesktopEntry& entry, std::string_view searchPath) {
  entry.program.clear();
  entry.realProgram.clear();
  entry.realTryExec.clear();
  entry.script.clear();
  entry.canStart = entry.dbusActivatable;
  if (!entry.command.empty()) {
    const std::string& first = entry.command.front();
    const std::string program = findProgram(first, searchPath).value_or("");
    entry.canStart |= !program.empty();
    const std::string real = realPathOf(program);
    if (isInterpreter(first) || isInterpreter(real)) {
      const auto script = scriptOf(isInterpreter(real) ? real : first, entry.command);
      if (script && script->starts_with('/')) entry.script = realPath(*script).value_or(*script);
      if (script && entry.script.empty()) entry.script = lastComponent(*script);
    } else if (!saysNothing(first)) {
      entry.program = program;
      // If a link leads to a launcher (each /snap/bin/NAME does), only the link's own name says something.
      if (!saysNothing(real)) entry.realProgram = real;
    }
  }
  if (entry.tryExec.empty()) return;
  const std::string tryExec = findProgram(entry.tryExec, searchPath).value_or("");
  entry.installed = !tryExec.empty();
  const std::string real = realPathOf(tryExec);
  if (!saysNothing(tryExec) && !saysNothing(real)) entry.realTryExec = real;
}

}  // namespace tollvane
