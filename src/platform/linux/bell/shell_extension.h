// Offers Tollvane's extension of GNOME Shell, where the shell shows no status icons. Main thread only.
#pragma once

#include <QDBusConnection>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "platform/application.h"
#include "platform/files.h"
#include "support/liveness.h"

namespace tollvane {

class ShellExtension {
 public:
  static constexpr const char* uuid = "tollvane@quarnel.com";

  // `forms`: the folder of the bundle with the extension's forms, one for each generation of the shell. `data`: the
  // user's data folder, absent if the user has no home.
  ShellExtension(QDBusConnection bus, Files& files, std::filesystem::path forms,
                 std::optional<std::filesystem::path> data);

  // Asks the shell of this desktop which version it is. `offer` is called, later, if it is one for which there is a
  // form, and if the user does not have the extension yet; else `otherwise`.
  void find(std::function<void()> offer, std::function<void()> otherwise);

  // Copies the extension into the user's folder and turns it on. The shell shows it after the next login. False if the
  // files cannot be written.
  bool install();

 private:
  std::filesystem::path target() const;

  QDBusConnection bus_;
  Files& files_;
  std::filesystem::path forms_;
  std::optional<std::filesystem::path> data_;
  std::filesystem::path form_;  // of the shell that was found
  Liveness alive_;
};

// The folder of the form for this version of the shell ("43.9"); empty if no form fits that version.
std::string formForShell(const std::string& version);

}  // namespace tollvane
