// The virtual roles for settings, folders, files and the bundle, in memory.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tollvane::test {

class VirtualDefaults : public Defaults {
 public:
  std::optional<Value> object(std::string_view key) const override {
    const auto found = values.find(std::string(key));
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  void set(std::string_view key, bool value) override { values[std::string(key)] = value; }
  void set(std::string_view key, double value) override { values[std::string(key)] = value; }

  std::map<std::string, Value> values;
};

class VirtualLocations : public Locations {
 public:
  std::optional<std::filesystem::path> home() const override { return "/home/user"; }
  std::optional<std::filesystem::path> applicationSupport() const override {
    ++asked;
    return support;
  }
  std::optional<std::filesystem::path> runtimeFolder() const override { return runtime; }
  std::vector<std::filesystem::path> nativeHostDirectories(std::string_view bundleID) const override {
    const auto found = nativeHosts.find(std::string(bundleID));
    if (found == nativeHosts.end() || !support) return {};
    return {*support / found->second};
  }
  std::vector<std::filesystem::path> applicationFolders() const override {
    return {"/Applications", "/System/Applications", "/System/Applications/Utilities", "/home/user/Applications"};
  }

  std::optional<std::filesystem::path> support = "/home/user/Application Support";
  std::optional<std::filesystem::path> runtime;
  std::map<std::string, std::string> nativeHosts = {
      {"com.google.Chrome", "Google/Chrome/NativeMessagingHosts"},
      {"com.microsoft.edgemac", "Microsoft Edge/NativeMessagingHosts"},
      {"com.brave.Browser", "BraveSoftware/Brave-Browser/NativeMessagingHosts"},
      {"company.thebrowser.Browser", "Arc/User Data/NativeMessagingHosts"},
      {"org.chromium.Chromium", "Chromium/NativeMessagingHosts"},
      {"org.mozilla.firefox", "Mozilla/NativeMessagingHosts"},
  };
  mutable int asked = 0;
};

// A disk in memory. Directories must exist before files can be written into them.
class VirtualFiles : public Files {
 public:
  bool exists(const std::filesystem::path& path) const override {
    return contents.contains(path) || directories.contains(path);
  }
  bool createDirectories(const std::filesystem::path& directory) override {
    if (readOnly) return false;
    std::vector<std::filesystem::path> wanted;
    for (std::filesystem::path p = directory; !p.empty() && p != p.root_path(); p = p.parent_path())
      wanted.push_back(p);
    for (const auto& p : wanted)
      if (contents.contains(p)) return false;
    for (const auto& p : wanted) directories[p] = true;
    return true;
  }
  Append append(const std::filesystem::path& file, std::string_view bytes) override {
    const auto found = contents.find(file);
    if (readOnly || found == contents.end() || locked.contains(file)) return Append::notOpened;
    if (full) return Append::notWritten;
    found->second += bytes;
    return Append::done;
  }
  bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) override {
    if (readOnly || full || !directories.contains(file.parent_path())) return false;
    contents[file] = bytes;
    ++atomicWrites;
    return true;
  }

  bool write(const std::filesystem::path& file, std::string_view bytes) override {
    if (readOnly || full || !directories.contains(file.parent_path())) return false;
    contents[file] = bytes;
    return true;
  }
  std::optional<std::string> read(const std::filesystem::path& file, std::size_t most) const override {
    const auto found = contents.find(file);
    if (found == contents.end() || found->second.size() > most || unreadable.contains(file)) return std::nullopt;
    return found->second;
  }
  std::optional<std::vector<std::string>> list(const std::filesystem::path& directory) const override {
    if (!directories.contains(directory)) return std::nullopt;
    std::vector<std::string> names;
    const auto add = [&](const auto& paths) {
      for (const auto& [path, what] : paths)
        if (path.parent_path() == directory) names.insert(names.begin(), path.filename());
    };
    add(contents);
    add(directories);
    return names;
  }
  bool contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const override {
    return contents.contains(a) && contents.contains(b) && contents.at(a) == contents.at(b);
  }
  bool canBeStarted(const std::filesystem::path& program) const override {
    return contents.contains(program) && !noPrograms;
  }
  bool copy(const std::filesystem::path& from, const std::filesystem::path& to) override {
    if (contents.contains(to) || !contents.contains(from) || !write(to, contents.at(from))) return false;
    ++copies;
    return true;
  }
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    if (readOnly || cannotRename || !contents.contains(from)) return false;
    contents[to] = std::move(contents[from]);
    contents.erase(from);
    if (locked.erase(from) > 0) locked.insert(to);
    return true;
  }
  bool remove(const std::filesystem::path& file) override {
    if (onRemove) onRemove(file);
    if (readOnly) return false;
    if (contents.erase(file) > 0) return true;
    const auto names = list(file);
    return names && names->empty() && directories.erase(file) > 0;
  }

  std::map<std::filesystem::path, std::string> contents;
  std::map<std::filesystem::path, bool> directories;
  std::set<std::filesystem::path> unreadable;
  std::set<std::filesystem::path> locked;  // these cannot be opened for writing, but can be renamed
  std::function<void(const std::filesystem::path&)> onRemove;
  bool cannotRename = false;
  int copies = 0;
  bool readOnly = false;
  bool noPrograms = false;  // none can be started
  bool full = false;
  int atomicWrites = 0;
};

class VirtualBundle : public Bundle {
 public:
  std::optional<std::string> infoString(std::string_view key) const override {
    const auto found = info.find(std::string(key));
    return found == info.end() ? std::nullopt : std::optional(found->second);
  }
  std::vector<std::string> infoStrings(std::string_view key) const override {
    const auto found = lists.find(std::string(key));
    return found == lists.end() ? std::vector<std::string>{} : found->second;
  }
  std::optional<std::filesystem::path> auxiliaryExecutable(std::string_view name) const override {
    return inside(programs, name);
  }
  std::optional<std::filesystem::path> resource(std::string_view name) const override {
    return inside(resources, name);
  }
  std::filesystem::path logTool() const override { return "/usr/bin/log"; }

  std::map<std::string, std::string> info = {{"TollvaneSite", "https://www.example.org"}};
  std::map<std::string, std::vector<std::string>> lists;
  std::set<std::string> programs;
  std::set<std::string> resources;

 private:
  static std::optional<std::filesystem::path> inside(const std::set<std::string>& names, std::string_view name) {
    if (!names.contains(std::string(name))) return std::nullopt;
    return std::filesystem::path("/bundle") / name;
  }
};

}  // namespace tollvane::test
