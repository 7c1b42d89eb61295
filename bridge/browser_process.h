// What the system tells about the browser that has started this process, and about the bridge itself. Each system has
// an implementation of its own. One thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/posix/unique_fd.h"
#include "platform/process_table.h"

namespace tollvane::bridge {

struct BrowserProcess {
  UniqueFd end;              // readable once the browser has ended; may hold no descriptor
  std::string introduction;  // the first line that the bridge sends to the application, without its line feed
  std::string name;  // names the process, and no other one before or after it on this computer: hexadecimal digits and
                     // '-'; empty if it cannot be told
};

// Call this right after the start: once the parent has ended, another process may get its number. `arguments`: without
// the program's name.
BrowserProcess browserProcess(Pid parent, const std::vector<std::string>& arguments);

// The real path of the program that runs in this process; empty if it cannot be known.
std::filesystem::path ownProgram();

// The folder in which applications keep their data for this user; absent if the user has no home.
std::optional<std::filesystem::path> applicationSupport();

// The folder for this user's sockets on this computer; absent if the system gives the user no such folder.
std::optional<std::filesystem::path> socketFolder();

// Gives up what a bridge does not need once it knows its browser, as far as the system can take that from it: from then
// on it opens no file and starts no program.
void giveUpRights();

}  // namespace tollvane::bridge
