// Makes lines as the log tool prints them.
#pragma once

#include <string>
#include <string_view>

namespace tollvane::test {

// Whole lines, with the newline.
std::string logLine(std::string_view path, std::string_view message);
std::string outputStarted(std::string_view name, int pid);
std::string soundRequested(std::string_view name, int pid);
std::string notificationPresented(std::string_view bundleID);

// Texts for "eventMessage".
std::string outputMessage(std::string_view name, std::string_view pid, bool running = true);
std::string requestMessage(std::string_view name, std::string_view pid);

}  // namespace tollvane::test
